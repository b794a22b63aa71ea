// Jumps of the random generator against its single steps.
#include "effect/pixel/fast/flake_random.h"

#include <gtest/gtest.h>

namespace {

TEST(RandomJump, IsThatManySteps) {
  for (const std::uint32_t seed : {0u, 1u, 731u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    std::uint32_t state = seed;
    for (std::uint32_t steps = 0; steps <= 1000; ++steps) {
      ASSERT_EQ(JumpBy(steps)(seed), state) << steps << " steps from " << seed;
      ASSERT_EQ(JumpBy(0u - steps)(state), seed) << steps << " steps back from " << state;
      state = FlakeRandom::Step(state);
    }
  }
}

// Longer jumps than a test can step through are made of shorter ones, round the generator's whole period.
TEST(RandomJump, AddsUpWithWrapAround) {
  std::uint32_t random = 1;
  for (int i = 0; i < 2000; ++i) {
    const std::uint32_t there = random = FlakeRandom::Step(random) ^ random >> 16;
    const std::uint32_t further = random = FlakeRandom::Step(random) ^ random >> 16;
    ASSERT_EQ(JumpBy(there)(JumpBy(further)(random)), JumpBy(there + further)(random))
        << there << " and " << further << " steps from " << random;
  }
}

}  // namespace
