// Which frames to render: the grammar of --frames, and shares of them for several machines.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace cli {

/// More frames than this in one run is taken for a typing error.
inline constexpr std::size_t kMaxFrames = 1'000'000;

/// The frames that `text` lists, in its order, each once.
///
/// A list is items with commas between them; an item is a frame `N`, an inclusive range `A-B`, backwards when
/// A is above B, `A-BxS`, every S-th frame of the range from A on, or `A-ByS`, all but those.  Numbers may be
/// negative (`-5--1`) and padded (`0001-0010`).  Throws ToolError(kUsage).
std::vector<std::int32_t> ParseFrames(std::string_view text);

/// `count` of the frames, at even distances, the first and the last among them; all when there are no more.
std::vector<std::int32_t> SpreadFrames(const std::vector<std::int32_t>& frames, std::size_t count);

/// One share of a render that several machines divide among them.
struct Part {
  std::size_t number = 1;  // 1..count
  std::size_t count = 1;   // 1..kMaxFrames
  bool operator==(const Part&) const = default;
};

/// Reads `3/10`, the third of ten shares.  Throws ToolError(kUsage).
Part ParsePart(std::string_view text);

/// The share's frames, contiguous in `frames`.  The shares of one count differ by at most one frame and hold
/// every frame exactly once; with more shares than frames some are empty.
std::vector<std::int32_t> TakePart(const std::vector<std::int32_t>& frames, const Part& part);

}  // namespace cli
