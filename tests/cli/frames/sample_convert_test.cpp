// Every sample there is, there and back.
#include "cli/frames/sample_convert.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace cli;

// Nearest, halves up, by another road: long double holds all of these products and quotients well enough to
// tell a half from its neighbours.
std::uint32_t Nearest(std::uint32_t value, std::uint32_t from, std::uint32_t to) {
  return static_cast<std::uint32_t>(std::floor(static_cast<long double>(value) * to / from + 0.5L));
}

template <class From, class To>
void ExpectNearestEverywhere() {
  for (std::uint32_t value = 0; value <= From::kWhite; ++value) {
    const auto sample = static_cast<typename From::Sample>(value);
    ASSERT_EQ((ConvertSample<To, From>(sample)), Nearest(value, From::kWhite, To::kWhite))
        << value << " of " << From::kWhite << " to " << To::kWhite;
  }
}

template <class From, class Through>
void ExpectRoundTrip() {
  for (std::uint32_t value = 0; value <= From::kWhite; ++value) {
    const auto sample = static_cast<typename From::Sample>(value);
    ASSERT_EQ((ConvertSample<From, Through>(ConvertSample<Through, From>(sample))), value) << From::kWhite;
  }
}

TEST(SampleConvert, IsNearestForEveryWholeNumber) {
  ExpectNearestEverywhere<To65535, To32768>();
  ExpectNearestEverywhere<To32768, To65535>();
  ExpectNearestEverywhere<To255, To32768>();
  ExpectNearestEverywhere<To32768, To255>();
  ExpectNearestEverywhere<To65535, To255>();
  ExpectNearestEverywhere<To255, To65535>();
  ExpectNearestEverywhere<To255, To255>();
}

TEST(SampleConvert, KeepsBlackAndWhite) {
  EXPECT_EQ((ConvertSample<To32768, To65535>(0)), 0);
  EXPECT_EQ((ConvertSample<To32768, To65535>(65535)), 32768);
  EXPECT_EQ((ConvertSample<To65535, To32768>(0)), 0);
  EXPECT_EQ((ConvertSample<To65535, To32768>(32768)), 65535);
  EXPECT_EQ((ConvertSample<To65535, To32768>(40000)), 65535) << "above white";
  EXPECT_EQ((ConvertSample<ToOne, To65535>(65535)), 1.0f);
  EXPECT_EQ((ConvertSample<ToOne, To32768>(16384)), 0.5f);
}

TEST(SampleConvert, LosesNothingOnTheWayThroughSomethingFiner) {
  ExpectRoundTrip<To32768, To65535>();
  ExpectRoundTrip<To32768, ToOne>();
  ExpectRoundTrip<To65535, ToOne>();
  ExpectRoundTrip<To255, To32768>();
  ExpectRoundTrip<To255, To65535>();
  ExpectRoundTrip<To255, ToOne>();
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
