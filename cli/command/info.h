// `vintrel info`: what the tool sees in a file.
#pragma once

#include <string>

namespace cli {

/// A few lines about a picture, a sequence or a video: size, depth, alpha, pixel aspect, frames, rate, and
/// notes. Throws ToolError(kInput).
std::string DescribeInput(const std::string& path);

}  // namespace cli
