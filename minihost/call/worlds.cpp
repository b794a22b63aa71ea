#include "minihost/call/worlds.h"

#include <algorithm>
#include <utility>

namespace minihost {
namespace {

bool Covers(const PF_LayerDef& known, const PF_LayerDef& world) noexcept {
  return known.data == world.data && known.rowbytes == world.rowbytes && world.width <= known.width &&
         world.height <= known.height;
}

}  // namespace

void WorldTable::New(int width, int height, Depth depth, Clearing clearing, PF_EffectWorld& world) {
  owned_.emplace_back(width, height, depth, clearing);
  world = owned_.back().World();
}

bool WorldTable::Dispose(PF_EffectWorld& world) noexcept {
  const auto image = std::find_if(owned_.begin(), owned_.end(),
                                  [&](const Image& owned) { return owned.Data() == world.data; });
  if (image == owned_.end()) {
    return false;
  }
  owned_.erase(image);
  world = PF_EffectWorld{};
  return true;
}

std::optional<Depth> WorldTable::DepthOf(const PF_EffectWorld& world) const noexcept {
  for (const Known& known : borrowed_) {
    if (Covers(known.world, world)) {
      return known.depth;
    }
  }
  for (const Image& image : owned_) {
    if (Covers(image.World(), world)) {
      return image.PixelDepth();
    }
  }
  return std::nullopt;
}

}  // namespace minihost
