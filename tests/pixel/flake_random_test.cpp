#include "effect/pixel/flake_random.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <vector>

#include "effect/pixel/integer.h"

namespace {

constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();

TEST(FlakeRandom, FollowsTheRecurrenceFromEverySeed) {
  const struct {
    std::int32_t seed;
    std::vector<std::int32_t> first;
  } streams[] = {{731, {20802, 6699, 3598, 753, 25395, 14414, 28657}},
                 {3179, {18832, 19727}},
                 {1793, {11755, 2231, 6058}},
                 {0, {0}},
                 {-1, {}},
                 {kMin, {}},
                 {kMax, {}}};
  for (const auto& [seed, first] : streams) {
    FlakeRandom random(seed), unsignedRandom(static_cast<std::uint32_t>(seed));
    std::uint64_t state = static_cast<std::uint32_t>(seed);
    for (std::size_t i = 0; i < 100'000; ++i) {
      state = (state * 1103515245 + 12345) % (std::uint64_t{1} << 32);
      const std::int32_t draw = random.Next();
      ASSERT_EQ(draw, static_cast<std::int32_t>(state / 65536 % 32768)) << "seed " << seed << ", draw " << i;
      ASSERT_EQ(unsignedRandom.Next(), draw);
      ASSERT_TRUE(i >= first.size() || draw == first[i]) << "seed " << seed << ", draw " << i;
    }
  }
}

TEST(FlakeRandom, FractionsAreProductsWithTheNearestConstants) {
  ASSERT_EQ(std::bit_cast<std::uint32_t>(2.0f / 32767.0f), 0x38800100u);
  for (std::int32_t draw = 0; draw <= kRandomMax; ++draw) {
    ASSERT_EQ(UnitFraction(draw), draw * (1.0 / 32767.0)) << draw;
    ASSERT_EQ(SignedFraction(draw), draw * (2.0 / 32767.0) - 1.0) << draw;
    ASSERT_EQ(SignedFractionF(draw), static_cast<float>(draw) * (2.0f / 32767.0f) - 1.0f) << draw;
  }
  EXPECT_EQ(UnitFraction(kRandomMax), 1.0);
  EXPECT_EQ(SignedFraction(kRandomMax), 1.0);
  EXPECT_EQ(SignedFractionF(kRandomMax), 1.0f);
}

TEST(Integer, HasAResultForEveryInput) {
  EXPECT_EQ(WrapAdd(kMax, 1), kMin);
  EXPECT_EQ(WrapSubtract(kMin, 1), kMax);
  EXPECT_EQ(WrapMultiply(0x10001, -0x10001), -0x20001);
  const double kInfinity = std::numeric_limits<double>::infinity();
  const double kNaN = std::numeric_limits<double>::quiet_NaN();
  for (const double zero : {0.9, -0.9, 2147483648.0, -2147483649.0, 1e300, kInfinity, -kInfinity, kNaN})
    EXPECT_EQ(TruncateToInt32(zero), 0) << zero;
  EXPECT_EQ(TruncateToInt32(-1.9), -1);
  EXPECT_EQ(TruncateToInt32(2147483647.9), kMax);
  EXPECT_EQ(TruncateToInt32(-2147483648.9), kMin);
}

}  // namespace
