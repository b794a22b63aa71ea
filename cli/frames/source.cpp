#include "cli/frames/source.h"

#include <algorithm>
#include <utility>

#include "minihost/picture/copy.h"

namespace cli {

BlankSource::BlankSource(FrameSize size, minihost::Depth depth) {
  traits_.width = size.width;
  traits_.height = size.height;
  traits_.depth = depth;
  traits_.hasAlpha = true;
}

std::optional<Picture> BlankSource::Read(std::int32_t) {
  PictureTraits traits;
  traits.hasAlpha = true;
  return Picture{minihost::Image(traits_.width, traits_.height, traits_.depth), traits};
}

ProxySource::ProxySource(std::unique_ptr<FrameSource> source, int divisor)
    : source_(std::move(source)), traits_(source_->Traits()) {
  traits_.width = std::max(1, traits_.width / divisor);
  traits_.height = std::max(1, traits_.height / divisor);
  traits_.isReduced = divisor > 1;
}

std::optional<Picture> ProxySource::Read(std::int32_t frame) {
  std::optional<Picture> picture = source_->Read(frame);
  if (picture) {
    picture->image = minihost::Resized(picture->image, traits_.width, traits_.height);
  }
  return picture;
}

}  // namespace cli
