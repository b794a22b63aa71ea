#include "cli/scene/frame_size.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <system_error>

#include "cli/report/error.h"
#include "minihost/picture/image.h"

namespace cli {
namespace {

/// All of `digits` as one side of a picture, 0 when it is none.
int ParseSide(std::string_view digits) {
  int side = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), side);
  const bool whole = error == std::errc{} && end == digits.data() + digits.size();
  return whole && side <= minihost::Image::kMaxSide ? std::max(side, 0) : 0;
}

}  // namespace

FrameSize ParseFrameSize(std::string_view text) {
  const std::size_t cross = std::min(text.find('x'), text.size());
  const FrameSize size{ParseSide(text.substr(0, cross)),
                       ParseSide(text.substr(std::min(cross + 1, text.size())))};
  if (size.width == 0 || size.height == 0) {
    Refuse(ExitCode::kUsage, "'{}' is not a size in pixels up to {} a side; write it as 1920x1080", text,
           minihost::Image::kMaxSide);
  }
  return size;
}

std::string FormatFrameSize(const FrameSize& size) {
  return fmt::format("{}x{}", size.width, size.height);
}

}  // namespace cli
