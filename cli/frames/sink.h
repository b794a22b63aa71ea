// Where finished frames go: numbered stills, a video, a contact sheet.
#pragma once

#include <cstdint>
#include <memory>

#include "cli/frames/picture.h"
#include "minihost/picture/image.h"

namespace cli {

/// A frame on its way to the sink, in the sink's own form.
struct EncodedFrame {
  virtual ~EncodedFrame() = default;
};

/// Takes finished frames: encodes them on many threads, and writes what is encoded in order.
class FrameSink {
 public:
  virtual ~FrameSink() = default;

  /// The part of the work that needs no order; called on any thread, on many at once.
  virtual std::unique_ptr<EncodedFrame> Encode(std::int32_t frame, const minihost::Image& image,
                                               const PictureTraits& traits) const = 0;

  /// Takes the frames in the order of the render, one at a time, each as this sink's Encode made it.  Throws
  /// ToolError(kOutput).
  virtual void Write(std::int32_t frame, std::unique_ptr<EncodedFrame> encoded) = 0;

  /// Ends the output after its last frame, of which there is one at least: only after this does a file with
  /// many frames appear under its final name.  A sink destroyed without it leaves nothing behind, except
  /// stills that are complete.
  virtual void Finish() = 0;
};

}  // namespace cli
