// The looks that more than one section measures.
#pragma once

#include "bench/snow_frame.h"

inline Snow Default(double flakes) {
  return {.numbers = {{kFlakes, flakes}}};
}

/// The largest flakes.
inline Snow LargeFlakes() {
  return {.numbers = {{kFlakes, 50'000}, {kSize, 15}}};
}

/// The fastest fall, with the shutter open for the whole frame.
inline Snow Streaks() {
  return {.numbers = {{kFlakes, 50'000}, {kSize, 6}, {kSpeed, 2000}}, .shutterDegrees = 360.0};
}
