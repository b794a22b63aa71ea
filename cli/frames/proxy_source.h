// A source at a fraction of its size, for quick looks.
#pragma once

#include <memory>

#include "cli/frames/frame_io.h"

namespace cli {

/// Every picture of `source` reduced to one over `divisor` of its width and height, at least one pixel.
class ProxySource : public FrameSource {
 public:
  ProxySource(std::unique_ptr<FrameSource> source, int divisor);
  const SourceTraits& Traits() const override { return traits_; }
  std::optional<Picture> Read(std::int32_t frame) override;
  std::filesystem::path FileOf(std::int32_t frame) const override { return source_->FileOf(frame); }

 private:
  std::unique_ptr<FrameSource> source_;
  SourceTraits traits_;
};

}  // namespace cli
