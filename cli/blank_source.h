// Frames with nothing on them, for snow alone.
#pragma once

#include <string_view>

#include "cli/frame_io.h"

namespace cli {

struct PictureSize {
  int width;  // pixels
  int height;
};

/// Reads `1920x1080`.  Throws ToolError(kUsage).
PictureSize ParseSize(std::string_view text);

/// Transparent black in every frame.
class BlankSource : public FrameSource {
 public:
  BlankSource(PictureSize size, minihost::Depth depth);
  const SourceTraits& Traits() const override { return traits_; }
  std::optional<Picture> Read(std::int32_t frame) override;

 private:
  SourceTraits traits_;
};

}  // namespace cli
