// Frames with nothing on them, for snow alone.
#pragma once

#include "cli/frames/frame_io.h"
#include "cli/scene/settings.h"

namespace cli {

/// Transparent black in every frame.
class BlankSource : public FrameSource {
 public:
  BlankSource(FrameSize size, minihost::Depth depth);
  const SourceTraits& Traits() const override { return traits_; }
  std::optional<Picture> Read(std::int32_t frame) override;

 private:
  SourceTraits traits_;
};

}  // namespace cli
