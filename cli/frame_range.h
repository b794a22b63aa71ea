// Which frames to render: the grammar of --frames.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace cli {

/// More frames than this in one run is taken for a slip of the keyboard.
inline constexpr std::size_t kMaxFrames = 1'000'000;

/// The frames that `text` lists, in its order, each once.
///
/// A list is items with commas between them; an item is a frame `N` or an inclusive range `A-B` with A not
/// above B.  Numbers may be negative (`-5--1`) and padded (`0001-0010`).  Throws ToolError(kUsage).
std::vector<std::int32_t> ParseFrames(std::string_view text);

}  // namespace cli
