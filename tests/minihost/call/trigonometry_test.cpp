// The host's own cosine and tangent against those of glibc, which it lends where there is one.
#include "minihost/call/trigonometry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace {

#if defined(__GLIBC__)
TEST(Trigonometry, TheTangentIsThatOfGlibcForEveryHundredthOfADegree) {
  constexpr double kHalfDegrees = 0.008726646259971648;  // as the effect has it
  for (int hundredths = 0; hundredths <= 9000; ++hundredths) {
    const double half = std::min(hundredths / 100.0, 89.9) * kHalfDegrees;
    ASSERT_EQ(minihost::Tangent(half), std::tan(half)) << hundredths;
  }
}

TEST(Trigonometry, TheCosineRoundsToTheSingleThatGlibcsDoes) {
  std::mt19937_64 random(1);
  const auto expectSame = [](double angle) {
    ASSERT_EQ(static_cast<float>(minihost::Cosine(angle)), static_cast<float>(std::cos(angle))) << angle;
  };
  for (int i = 0; i < 3'000'000; ++i) {
    // Up to 2^44, beyond all three ways.
    expectSame(
        std::ldexp(static_cast<double>(random()) / 0x1p63 - 1, i % 1000 == 0 ? i / 1000 % 44 : i % 20));
  }
  // Zeros, where single precision is finest, and turns.
  for (int quarter = -100'000; quarter <= 100'000; ++quarter) {
    expectSame(quarter * 0x1.921fb54442d18p+0);
  }
}
#endif

}  // namespace
