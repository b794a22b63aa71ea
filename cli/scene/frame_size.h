// The size of a picture as users write it.
#pragma once

#include <string>
#include <string_view>

namespace cli {

/// Pixels.
struct FrameSize {
  int width = 0;
  int height = 0;
  bool operator==(const FrameSize&) const = default;
};

/// Reads "1920x1080"; each side up to what an image may have.  Throws ToolError(kUsage) with the value and
/// what is possible, without the name of the option or key.
FrameSize ParseFrameSize(std::string_view text);
std::string FormatFrameSize(const FrameSize& size);

}  // namespace cli
