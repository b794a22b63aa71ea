// Every sample there is, there and back.
#include "cli/frames/sample_convert.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace cli;

// Nearest, halves up, in another way: long double holds all of these products and quotients well enough to
// tell a half from its neighbours.
std::uint32_t Nearest(std::uint32_t value, std::uint32_t from, std::uint32_t to) {
  return static_cast<std::uint32_t>(std::floor(static_cast<long double>(value) * to / from + 0.5L));
}

/// Every value is nearest in another way of counting and, where that is finer, comes back.
template <class From, class To>
void ExpectExact() {
  for (std::uint32_t value = 0; value <= From::kWhite; ++value) {
    const auto sample = static_cast<typename From::Sample>(value);
    const auto there = ConvertSample<To, From>(sample);
    if constexpr (kIsFloat<To>) {
      ASSERT_EQ(there, static_cast<float>(static_cast<double>(value) / From::kWhite));
      ASSERT_EQ((ConvertSample<From, To>(there)), value) << From::kWhite;
    } else {
      ASSERT_EQ(there, Nearest(value, From::kWhite, To::kWhite))
          << value << " of " << From::kWhite << " to " << To::kWhite;
      if (To::kWhite >= From::kWhite) {
        ASSERT_EQ((ConvertSample<From, To>(there)), value) << From::kWhite << " by " << To::kWhite;
      }
    }
  }
}

template <class... From>
void ExpectExactFromAndToAll() {
  const auto toAll = []<class To>(To) { (ExpectExact<From, To>(), ...); };
  (toAll(From()), ...);
  toAll(ToOne());
}

TEST(SampleConvert, IsNearestForEveryWholeNumberAndBack) {
  ExpectExactFromAndToAll<To255, To32768, To65535>();
  EXPECT_EQ((ConvertSample<To65535, To32768>(40000)), 65535) << "above white";
}

TEST(SampleConvert, ClampsFloats) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  for (const float low : {-0.0f, -1.0f, -kInfinity, std::nanf(""), 1e-40f}) {
    EXPECT_EQ((ConvertSample<To255, ToOne>(low)), 0) << low;
    EXPECT_EQ((ConvertSample<To32768, ToOne>(low)), 0) << low;
  }
  for (const float high : {1.0f, 1.5f, 1e30f, kInfinity}) {
    EXPECT_EQ((ConvertSample<To255, ToOne>(high)), 255) << high;
    EXPECT_EQ((ConvertSample<To32768, ToOne>(high)), 32768) << high;
  }
  EXPECT_EQ((ConvertSample<To32768, ToOne>(0.5f / 32768)), 1) << "halves go up";
  EXPECT_EQ((ConvertSample<To32768, ToOne>(std::nextafter(0.5f / 32768, 0.0f))), 0);
  EXPECT_EQ((ConvertSample<ToOne, ToOne>(-3.5f)), -3.5f);
}

}  // namespace
