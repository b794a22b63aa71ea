#include "cli/scene/frame_range.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <unordered_set>

#include "cli/report/error.h"
#include "cli/report/number.h"

namespace cli {
namespace {

constexpr char kNotFrames[] = "is not a frame or a range of frames";

[[noreturn]] void RefuseItem(std::string_view item, std::string_view reason) {
  Refuse(ExitCode::kUsage, "'{}' {}; write frames as 7, 0-47, 0-47x2 or 0-10,20,30-40", item, reason);
}

std::int32_t TakeFrame(std::string_view& rest, std::string_view item) {
  std::int32_t number = 0;
  const std::errc error = TakeNumber(rest, number);
  if (error == std::errc::result_out_of_range) {
    RefuseItem(item, "is beyond the frames that can be counted");
  }
  if (error != std::errc()) {
    RefuseItem(item, kNotFrames);
  }
  return number;
}

/// Takes the mark that has to come next off the front of `rest`; false when nothing comes.
bool TakeMark(std::string_view& rest, char mark, std::string_view item) {
  if (rest.empty()) {
    return false;
  }
  if (rest.front() != mark) {
    RefuseItem(item, kNotFrames);
  }
  rest.remove_prefix(1);
  return true;
}

struct Range {
  std::int32_t first;
  std::int32_t last;
  std::int32_t step = 1;
  bool isComplement = false;  // the frames between the steps
};

Range ParseItem(std::string_view item) {
  std::string_view rest = item;
  const std::int32_t first = TakeFrame(rest, item);
  if (!TakeMark(rest, '-', item)) {
    return {first, first};
  }
  const std::int32_t last = TakeFrame(rest, item);
  const bool isComplement = rest.starts_with('y');
  if (!TakeMark(rest, isComplement ? 'y' : 'x', item)) {
    return {first, last};
  }
  const std::int32_t step = TakeFrame(rest, item);
  if (!rest.empty()) {
    RefuseItem(item, kNotFrames);
  }
  if (step < 1) {
    RefuseItem(item, fmt::format("steps by {}, and the least step is 1", step));
  }
  return {first, last, step, isComplement};
}

}  // namespace

std::vector<std::int32_t> ParseFrames(std::string_view text) {
  std::vector<std::int32_t> frames;
  std::unordered_set<std::int32_t> seen;
  while (true) {
    const std::size_t comma = std::min(text.find(','), text.size());
    const std::string_view item = text.substr(0, comma);
    const Range range = ParseItem(item);
    const std::int64_t length = std::abs(std::int64_t{range.last} - range.first);
    const bool isNothing = range.isComplement && range.step == 1;
    const std::int64_t stride = isNothing ? length + 1 : range.isComplement ? 1 : range.step;
    for (std::int64_t i = 0; i <= length; i += stride) {
      if (range.isComplement && i % range.step == 0) {
        continue;
      }
      const auto number = static_cast<std::int32_t>(range.first + (range.last < range.first ? -i : i));
      if (!seen.insert(number).second) {
        continue;
      }
      if (frames.size() == kMaxFrames) {
        RefuseItem(item, fmt::format("makes more than {} frames", kMaxFrames));
      }
      frames.push_back(number);
    }
    if (comma == text.size()) {
      if (frames.empty()) {
        RefuseItem(item, "leaves no frame");
      }
      return frames;
    }
    text.remove_prefix(comma + 1);
  }
}

std::vector<std::int32_t> SpreadFrames(const std::vector<std::int32_t>& frames, std::size_t count) {
  if (count >= frames.size()) {
    return frames;
  }
  std::vector<std::int32_t> spread;
  for (std::size_t i = 0; i < count; ++i) {
    spread.push_back(frames[count == 1 ? 0 : i * (frames.size() - 1) / (count - 1)]);
  }
  return spread;
}

Part ParsePart(std::string_view text) {
  const std::size_t slash = text.find('/');
  const auto number = ParseNumber<std::size_t>(text.substr(0, slash));
  const auto count = ParseNumber<std::size_t>(slash == text.npos ? "" : text.substr(slash + 1));
  if (!number || !count || *number < 1 || *number > *count || *count > kMaxFrames) {
    Refuse(ExitCode::kUsage,
           "'{}' is not a share of the frames; write 3/10 for the third of ten, at most {} shares", text,
           kMaxFrames);
  }
  return {*number, *count};
}

std::vector<std::int32_t> TakePart(const std::vector<std::int32_t>& frames, const Part& part) {
  // At most kMaxFrames squared, far from the end of the type.
  const auto begin = [&](std::size_t share) {
    return frames.begin() + static_cast<std::ptrdiff_t>(frames.size() * share / part.count);
  };
  return {begin(part.number - 1), begin(part.number)};
}

}  // namespace cli
