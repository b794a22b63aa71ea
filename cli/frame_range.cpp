#include "cli/frame_range.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <unordered_set>

#include "cli/tool_error.h"

namespace cli {
namespace {

[[noreturn]] void Refuse(std::string_view item, std::string_view reason) {
  throw ToolError(ExitCode::kUsage,
                  fmt::format("--frames: '{}' {}; write frames as 7, 0-47 or 0-10,20,30-40", item, reason));
}

/// Takes a number off the front of `rest`.
std::int32_t TakeNumber(std::string_view& rest, std::string_view item) {
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
  if (error == std::errc::result_out_of_range) Refuse(item, "is beyond the frames that can be counted");
  if (error != std::errc{}) Refuse(item, "is not a frame or a range of frames");
  rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
  return number;
}

struct Range {
  std::int32_t first;
  std::int32_t last;
};

Range ParseItem(std::string_view item) {
  std::string_view rest = item;
  const std::int32_t first = TakeNumber(rest, item);
  if (rest.empty()) return {first, first};
  if (rest.front() != '-') Refuse(item, "is not a frame or a range of frames");
  rest.remove_prefix(1);
  const std::int32_t last = TakeNumber(rest, item);
  if (!rest.empty()) Refuse(item, "is not a frame or a range of frames");
  if (last < first) Refuse(item, fmt::format("runs backwards (did you mean {}-{}?)", last, first));
  return {first, last};
}

}  // namespace

std::vector<std::int32_t> ParseFrames(std::string_view text) {
  std::vector<std::int32_t> frames;
  std::unordered_set<std::int32_t> seen;
  while (true) {
    const std::size_t comma = std::min(text.find(','), text.size());
    const std::string_view item = text.substr(0, comma);
    const Range range = ParseItem(item);
    for (std::int64_t frame = range.first; frame <= range.last; ++frame) {
      const auto number = static_cast<std::int32_t>(frame);
      if (!seen.insert(number).second) continue;
      if (frames.size() == kMaxFrames) Refuse(item, fmt::format("makes more than {} frames", kMaxFrames));
      frames.push_back(number);
    }
    if (comma == text.size()) return frames;
    text.remove_prefix(comma + 1);
  }
}

}  // namespace cli
