// Where frames come from and where they go.
//
// A render pulls pictures from a source in order, on one thread at a time; renders and encodes them on many;
// and hands what is encoded to a sink, in order again.  Stills, video and blank ground are sources; numbered
// stills and video are sinks.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/frames/picture.h"
#include "cli/scene/frame_rate.h"
#include "minihost/picture/image.h"

namespace cli {

/// What is known of a source before its first frame.
struct SourceTraits {
  int width = 0;  // pixels
  int height = 0;
  minihost::Depth depth = minihost::Depth::kBits8;
  double pixelAspect = 1;  // a pixel's width over its height
  bool hasAlpha = false;
  std::optional<FrameRate> rate;           // of video
  std::optional<std::int32_t> firstFrame;  // of sequences and video
  std::optional<std::int32_t> lastFrame;
};

/// Pictures by frame number.  Not safe for two threads at once; frames asked for in rising order are cheap.
class FrameSource {
 public:
  virtual ~FrameSource() = default;
  virtual const SourceTraits& Traits() const = 0;

  /// The frame's picture, of the traits' size and depth, straight alpha.  Empty when the source has no such
  /// frame. Throws ToolError(kInput) when there is one that cannot be read.
  virtual std::optional<Picture> Read(std::int32_t frame) = 0;

  /// The file that holds this frame alone; empty when there is none, or one for all frames.
  virtual std::filesystem::path FileOf(std::int32_t /*frame*/) const { return {}; }
};

/// A frame on its way to the sink, in the sink's own form.
struct EncodedFrame {
  virtual ~EncodedFrame() = default;
};

/// Takes finished frames.
class FrameSink {
 public:
  virtual ~FrameSink() = default;

  /// The part of the work that needs no order; called on any thread, on many at once.
  virtual std::unique_ptr<EncodedFrame> Encode(std::int32_t frame, const minihost::Image& image,
                                               const PictureTraits& traits) const = 0;

  /// Takes the frames in the order of the render, one at a time.  Throws ToolError(kOutput).
  virtual void Write(std::int32_t frame, std::unique_ptr<EncodedFrame> encoded) = 0;

  /// Ends the output after its last frame, of which there is one at least: only after this does a file with
  /// many frames appear under its final name.  A sink destroyed without it leaves nothing behind, except
  /// stills that are complete.
  virtual void Finish() = 0;
};

}  // namespace cli
