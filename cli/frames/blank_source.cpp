#include "cli/frames/blank_source.h"

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

}  // namespace cli
