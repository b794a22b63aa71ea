// What both forms of the rasterizer hold a flake's path to.
#pragma once

/// Scene units.  A path that rises or falls by less ends so far below its start: so it has a length, and with
/// that a direction, even where the flake stands still.
inline constexpr float kLeastFall = 0.1f;

/// In pixels: coordinates and reaches stay below, so that a sum of two of them still fits 32 bits.
inline constexpr float kLargestCoordinate = 1 << 30;
