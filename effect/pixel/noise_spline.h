// Reading the noise table: where a coordinate's entries are, and the curve through four of them.
#pragma once

#include <cstdint>

#include "effect/pixel/integer.h"
#include "effect/pixel/noise.h"

/// Where the lookup finds entry `n`, 0..1023.  Blocks of entries are shifted and scrambled by the block's
/// number, so that the lookup does not repeat with the table's size.
constexpr std::int32_t NoiseIndex(std::int32_t n) noexcept {
  // Primes, which have no measure in common with the table's size.
  constexpr std::int32_t kBlock = 23;
  constexpr std::int32_t kShift = 89;
  const std::int32_t block = n / kBlock;
  return (WrapAdd(n, WrapMultiply(kShift, block)) ^ block) & (NoiseValues<float>::kEntries - 1);
}

/// The uniform cubic B-spline at the fraction `f` between `at` and `next`, which stand between `before` and
/// `afterNext`.
constexpr float NoiseSpline(float f, float before, float at, float next, float afterNext) noexcept {
  constexpr float kOneSixth = 0.16666667f;  // the weights add up to 6
  const float rest = 1.0f - f;
  const float squared = f * f;
  const float cubed = squared * f;
  const float weight0 = (rest * rest) * rest;
  const float weight1 = 3.0f * cubed - 6.0f * squared + 4.0f;
  const float weight2 = -3.0f * cubed + 3.0f * squared + 3.0f * f + 1.0f;
  return (weight0 * before + weight1 * at + weight2 * next + cubed * afterNext) * kOneSixth;
}
