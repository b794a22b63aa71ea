#include "cli/blank_source.h"

#include <fmt/format.h>

#include <charconv>
#include <system_error>

#include "cli/tool_error.h"

namespace cli {

PictureSize ParseSize(std::string_view text) {
  constexpr int kMost = minihost::Image::kMaxSide;
  const char* const end = text.data() + text.size();
  PictureSize size{};
  const auto width = std::from_chars(text.data(), end, size.width);
  if (width.ec == std::errc() && width.ptr != end && *width.ptr == 'x') {
    const auto height = std::from_chars(width.ptr + 1, end, size.height);
    const bool inRange = size.width >= 1 && size.width <= kMost && size.height >= 1 && size.height <= kMost;
    if (height.ec == std::errc() && height.ptr == end && inRange) return size;
  }
  throw ToolError(ExitCode::kUsage,
                  fmt::format("'{}' is not a size such as 1920x1080, 1 to {} pixels a side", text, kMost));
}

BlankSource::BlankSource(PictureSize size, minihost::Depth depth) {
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
