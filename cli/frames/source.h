// Where frames come from.
//
// A render pulls pictures from a source in order, on one thread at a time, and hands what it made of them to
// a sink.  Stills and video have sources in their own rooms; those that need no files stand here.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "cli/frames/picture.h"
#include "cli/scene/frame_rate.h"
#include "cli/scene/settings.h"
#include "minihost/picture/image.h"

namespace cli {

/// What is known of a source before its first frame.
struct SourceTraits {
  int width = 0;  // pixels
  int height = 0;
  minihost::Depth depth = minihost::Depth::kBits8;
  double pixelAspect = 1;  // a pixel's width over its height
  bool hasAlpha = false;
  std::optional<FrameRate> rate{};           // of video
  std::optional<std::int32_t> firstFrame{};  // of sequences and video
  std::optional<std::int32_t> lastFrame{};
  std::shared_ptr<const PictureExtras> extras{};  // of the first still
  bool isReduced = false;                         // in size, which the extras are not
};

/// Pictures by frame number.  Not safe for two threads at once; frames asked for in rising order are cheap.
class FrameSource {
 public:
  virtual ~FrameSource() = default;
  virtual const SourceTraits& Traits() const = 0;

  /// The frame's picture, of the traits' size and depth, straight alpha.  Empty when the source has no such
  /// frame.  Throws ToolError(kInput) when there is one that cannot be read.
  virtual std::optional<Picture> Read(std::int32_t frame) = 0;

  /// The file that holds this frame alone; empty when there is none, or one for all frames.
  virtual std::filesystem::path FileOf(std::int32_t /*frame*/) const { return {}; }

  /// What is wrong with a source that ends before it should, as half a sentence; empty when it is whole.  The
  /// frames that it has can be read.
  virtual std::string Damage() const { return {}; }
};

/// Transparent black in every frame, for snow alone.
class BlankSource : public FrameSource {
 public:
  BlankSource(FrameSize size, minihost::Depth depth);
  const SourceTraits& Traits() const override { return traits_; }
  std::optional<Picture> Read(std::int32_t frame) override;

 private:
  SourceTraits traits_;
};

/// Every picture of `source` reduced to one over `divisor` (1 or more) of its width and height, at least one
/// pixel: for quick looks.
class ProxySource : public FrameSource {
 public:
  ProxySource(std::unique_ptr<FrameSource> source, int divisor);
  const SourceTraits& Traits() const override { return traits_; }
  std::optional<Picture> Read(std::int32_t frame) override;
  std::filesystem::path FileOf(std::int32_t frame) const override { return source_->FileOf(frame); }
  std::string Damage() const override { return source_->Damage(); }

 private:
  std::unique_ptr<FrameSource> source_;
  SourceTraits traits_;
};

}  // namespace cli
