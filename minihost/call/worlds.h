// Every world that the effect may hand to a service, and of which depth it is.
#pragma once

#include <optional>
#include <vector>

#include "hostapi/worlds.h"
#include "minihost/picture/image.h"

namespace minihost {

/// A world's record does not tell a float image from an 8-bit one, so the host knows its worlds by their
/// pixels' address.
class WorldTable {
 public:
  /// A new image of the effect's own.  Throws as Image does; `world` is written on success only.
  void New(int width, int height, Depth depth, Clearing clearing, PF_EffectWorld& world);

  /// Frees an image made by New and clears the record.  False for any other world.
  bool Dispose(PF_EffectWorld& world) noexcept;

  /// Makes a picture of the host's known until ForgetBorrowed.
  void Borrow(const PF_LayerDef& world, Depth depth) { borrowed_.push_back({world, depth}); }
  void ForgetBorrowed() noexcept { borrowed_.clear(); }

  /// The depth of a world that this host made, if the record does not claim more pixels than it was given.
  std::optional<Depth> DepthOf(const PF_EffectWorld& world) const noexcept;

 private:
  struct Known {
    PF_LayerDef world;
    Depth depth;
  };

  std::vector<Image> owned_;
  std::vector<Known> borrowed_;
};

}  // namespace minihost
