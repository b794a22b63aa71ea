// Frames a second as the host counts time: whole ticks a second and whole ticks a frame.
#pragma once

#include <cstdint>
#include <string_view>

namespace cli {

/// Frame `n` begins at tick n * timeStep; a second has timeScale ticks.  Both are positive and reduced.
struct FrameRate {
  std::int32_t timeScale = 24;
  std::int32_t timeStep = 1;
};

/// Reads a whole number (`24`), a ratio (`24000/1001`) or a decimal (`12.5`), between 0.01 and 1000.
///
/// A decimal that is 24, 30, 48, 60 or 120 times 1000/1001 to the digits given (at least two) stands for that
/// exact ratio: 23.976 and 23.98 are 24000/1001.  Throws ToolError(kUsage).
FrameRate ParseFrameRate(std::string_view text);

}  // namespace cli
