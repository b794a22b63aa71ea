// The random generator taken many steps at once.
#pragma once

#include <cstdint>

#include "effect/pixel/flake_random.h"

/// The generator's recurrence applied a number of times: state * multiplier + increment, modulo 2^32.
struct RandomJump {
  std::uint32_t multiplier = 1;
  std::uint32_t increment = 0;

  constexpr std::uint32_t operator()(std::uint32_t state) const noexcept {
    return state * multiplier + increment;
  }
};

/// `steps` steps, by squaring.  The generator has full period, so negative steps are 2^32 less many forward.
constexpr RandomJump JumpBy(std::uint32_t steps) noexcept {
  RandomJump result;
  RandomJump power = {FlakeRandom::kMultiplier, FlakeRandom::kIncrement};
  for (; steps != 0; steps >>= 1) {
    if ((steps & 1) != 0) {
      result = {result.multiplier * power.multiplier, power(result.increment)};
    }
    power = {power.multiplier * power.multiplier, power(power.increment)};
  }
  return result;
}
