#include "cli/picture/losses.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace cli {

std::vector<std::string> LossesOf(FileFormat format, const SourceTraits& traits) {
  std::vector<std::string> losses;
  if (format == FileFormat::kJpeg && traits.hasAlpha) {
    losses.push_back("JPEG cannot hold alpha; the picture lies over black (.png, .tif and .exr hold it)");
  }
  if (format == FileFormat::kJpeg && traits.depth != minihost::Depth::kBits8) {
    losses.push_back("JPEG holds 8 bits; .png and .tif hold 16, .tif and .exr float");
  }
  if (format == FileFormat::kPng && traits.depth == minihost::Depth::kFloat) {
    losses.push_back("PNG holds 16 bits, no light above white; .tif and .exr hold float");
  }
  const bool isExr = format == FileFormat::kExr;
  if (traits.extras && !traits.extras->channels.empty() && (!isExr || traits.isReduced)) {
    losses.push_back(fmt::format("channels are left out: {}; .exr {}keeps them",
                                 fmt::join(traits.extras->channels, ", "), isExr ? "at full size " : ""));
  }
  return losses;
}

std::vector<std::string> LossesInVideo(const SourceTraits& traits) {
  if (!traits.extras) {
    return {};
  }
  std::vector<std::string> losses;
  if (const auto& blocks = traits.extras->blocks; !blocks.empty()) {
    losses.push_back(fmt::format("a video holds none of the picture's {}", fmt::join(blocks, ", ")));
  }
  if (const auto& channels = traits.extras->channels; !channels.empty()) {
    losses.push_back(fmt::format("channels are left out: {}; .exr keeps them", fmt::join(channels, ", ")));
  }
  return losses;
}

}  // namespace cli
