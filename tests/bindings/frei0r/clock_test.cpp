// From a host's times to frames and a rate.
#include "bindings/frei0r/clock.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

using bindings::NearestRate;
using bindings::Rate;
using frei0r::Clock;
using frei0r::TimeUnit;

TEST(Clock, FindsUnitAndRateFromTheTimes) {
  for (const Rate& rate :
       {Rate{24000, 1001}, Rate{24, 1}, Rate{25, 1}, Rate{30000, 1001}, Rate{7, 1}, Rate{60, 1}}) {
    for (const double unit : {1.0, 1000.0}) {  // seconds, milliseconds
      for (const bool isWhole : {false, true}) {
        Clock clock;
        // Long enough for close rates to agree again.
        for (int frame = 0; frame < 3000; ++frame) {
          double time = frame * unit / rate.FramesPerSecond();
          if (isWhole) {
            time = std::round(time * 1000 / unit) * unit / 1000;
          }
          EXPECT_EQ(clock.FrameAt(time), frame) << rate.timeScale << " " << unit;
          if (frame > 20) {
            ASSERT_EQ(clock.FrameRate(), rate) << rate.timeScale << " " << unit << " at " << frame;
          }
        }
        EXPECT_EQ(clock.FrameAt(unit), std::lround(rate.FramesPerSecond())) << "between two frames";
      }
    }
  }
}

TEST(Clock, TakesWhatItIsTold) {
  Clock clock;
  clock.Set(23.976, TimeUnit::kMilliseconds);
  EXPECT_EQ(clock.FrameAt(1001), 24);
  EXPECT_EQ(clock.FrameRate(), (Rate{24000, 1001}));
  clock.Set(23.976, TimeUnit::kSeconds);
  EXPECT_EQ(clock.FrameAt(1.001), 24);
}

TEST(Clock, CountsFramesWhereThereIsNoTime) {
  Clock clock;
  for (const double time : {1e16, std::nan(""), -1e300, std::numeric_limits<double>::infinity()}) {
    const int before = clock.FrameAt(0);
    EXPECT_EQ(before, 0);
    EXPECT_EQ(clock.FrameAt(time), 1);
    EXPECT_EQ(clock.FrameAt(time), 2) << "each call is a frame, the same time too";
  }
}

// The ticks of the shutter's end stay within 32 bits.
TEST(Clock, StaysWithinTheTicks) {
  for (const double framesPerSecond : {0.0, 0.001, 23.976, 999.999, 1e9}) {
    Clock clock;
    clock.Set(framesPerSecond, TimeUnit::kAuto);
    for (const double time : {0.0, 1e14, -1e14, 3.0, 1e14, 1e-300, 1e14 + 1}) {
      const double frame = clock.FrameAt(time);
      EXPECT_LE((std::abs(frame) + 1) * clock.FrameRate().timeStep, 2147483647.0) << time;
    }
  }
}

TEST(Rate, IsAUsualOneOrThousandths) {
  EXPECT_EQ(NearestRate(29.97), (Rate{30000, 1001}));
  EXPECT_EQ(NearestRate(24.0), (Rate{24, 1}));
  EXPECT_EQ(NearestRate(12.5), (Rate{25, 2}));
  EXPECT_EQ(NearestRate(17.123), (Rate{17123, 1000}));
  EXPECT_EQ(NearestRate(std::nan("")), (Rate{1, 100}));
  EXPECT_EQ(NearestRate(1e300), (Rate{1000, 1}));
}

}  // namespace
