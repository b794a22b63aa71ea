// Parameters at any time, and the split of the current time.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>

#include "effect/host/parameter_readers.h"
#include "effect/host/time_copy.h"
#include "tests/support/recording_host.h"

namespace {

TEST(Readers, ReadOnceAndCheckInAtOnce) {
  RecordingHost host;
  const auto calls = [&](int index) {
    const std::string id = std::to_string(index);
    const bool even = host.Log() == "checkout " + id + " @-7/9/4000000000\ncheckin " + id + "\n";
    host.ForgetCalls();
    return even;
  };
  host.curves[5] = [](std::int32_t time) { return time + 0.1; };
  EXPECT_EQ(Get_Float_Slider(&host.in, 5, -7, 9, 4000000000u), -7 + 0.1);
  EXPECT_TRUE(calls(5));
  for (const int value : {INT_MIN, -3, 0, 1, 2, 10001, INT_MAX}) {
    host.params[31].u.sd.value = host.params[25].u.pd.value = host.params[26].u.bd.value = value;
    EXPECT_EQ(Get_Int_Slider(&host.in, 31, -7, 9, 4000000000u), value);
    EXPECT_TRUE(calls(31));
    EXPECT_EQ(Get_PopUp(&host.in, 25, -7, 9, 4000000000u), value);
    EXPECT_TRUE(calls(25));
    EXPECT_EQ(Get_Checkbox(&host.in, 26, -7, 9, 4000000000u), value != 0);
    EXPECT_TRUE(calls(26));
  }
  host.params[18].u.cd.value = {0, 10, 20, 30};
  const PF_Pixel color = Get_Color(&host.in, 18, -7, 9, 4000000000u);
  EXPECT_TRUE(calls(18));
  EXPECT_TRUE(color.alpha == 255 && color.red == 10 && color.green == 20 && color.blue == 30);
  host.params[28].u.td.x_value = 3309568;
  host.params[28].u.td.y_value = -32768;
  const DoublePoint point = Get_Point(&host.in, 28, -7, 9, 4000000000u);
  EXPECT_TRUE(calls(28));
  EXPECT_EQ(point.x, 50.5);
  EXPECT_EQ(point.y, -0.5);
}

TEST(Readers, GiveTheDefaultWhereTheHostRefuses) {
  RecordingHost host;
  host.Refuse("checkout ");
  const double floats[33] = {0, 10000, 3,  25, 5000, 250, 50, 0, 0, 15, 0, 20, 0,   1,   75, 0, 50,
                             0, 0,     50, 0,  80,   150, 50, 0, 0, 0,  0, 0,  100, 100, 0,  0};
  for (int index = 1; index < 33; ++index) {
    if (host.params[index].param_type != PF_Param_FLOAT_SLIDER) continue;
    EXPECT_EQ(Get_Float_Slider(&host.in, index, 0, 1, 1), floats[index]) << index;
  }
  EXPECT_EQ(Get_Int_Slider(&host.in, 31, 0, 1, 1), 0);
  EXPECT_EQ(Get_PopUp(&host.in, 25, 0, 1, 1), 2);
  EXPECT_TRUE(Get_Checkbox(&host.in, 15, 0, 1, 1) && Get_Checkbox(&host.in, 26, 0, 1, 1));
  const PF_Pixel color = Get_Color(&host.in, 18, 0, 1, 1);
  EXPECT_EQ(color.alpha & color.red & color.green & color.blue, 255);
  EXPECT_EQ(Get_Point(&host.in, 28, 0, 1, 1).x, 50.0);
  EXPECT_FALSE(host.Called("checkin"));
  EXPECT_EQ(host.SmartFrame(0), 0);  // a whole frame of defaults
  EXPECT_EQ(host.Outstanding(), "");
}

TEST(CopyTime, SplitsTheTimeIntoWholeAndFraction) {
  struct Row {
    std::int32_t time, local, step, whole, frac;
    double fraction;
  };
  for (const Row& row :
       {Row{1001, 100, 100, 1000, 1, 0.01}, Row{1000, 100, 50, 1000, 0, 0.0},
        Row{1000, 100, 100, 1000, 0, 0.0}, Row{1050, 100, 7, 1000, 50, 0.5},
        Row{-250, 100, 100, -200, -50, -0.5}, Row{250, -100, 100, 200, 50, -0.5},
        Row{99, 100, 100, 0, 99, 0.99}, Row{0, -1, 1, 0, 0, 0.0}, Row{INT_MAX, 2, 2, INT_MAX - 1, 1, 0.5},
        Row{INT_MAX, INT_MIN, 1, 0, INT_MAX, INT_MAX / -2147483648.0}, Row{INT_MIN, 1, 1, INT_MIN, 0, 0.0},
        Row{INT_MIN, -1, -1, INT_MIN, 0, 0.0}, Row{INT_MIN, 3, 3, -2147483646, -2, -2 / 3.0},
        Row{INT_MIN, INT_MAX, 5, -INT_MAX, -1, -1.0 / INT_MAX}}) {
    RecordingHost host;
    host.in.current_time = row.time;
    host.in.local_time_step = row.local;
    host.in.time_step = row.step;
    host.in.time_scale = 4000000000u;
    host.in.shutter_angle = -49152;
    const TimeCopy time = FX_CopyTimeA(&host.in);
    SCOPED_TRACE(testing::Message() << row.time << " by " << row.local);
    EXPECT_EQ(time.renderTime, row.time);
    EXPECT_EQ(time.wholeTime, row.whole);
    EXPECT_EQ(time.fracTime, row.frac);
    EXPECT_EQ(time.frameFraction, row.fraction);
    EXPECT_EQ(time.timeScale, 4000000000u);
    EXPECT_EQ(time.timeStep, row.step);
    EXPECT_EQ(time.localTimeStep, row.local);
    EXPECT_EQ(time.shutterAngle, -0.75);
    EXPECT_EQ(host.Log(), "");
  }
  RecordingHost host;
  host.in.local_time_step = 0;
  for (const std::int32_t time : {0, 1000, -1000, INT_MIN, INT_MAX}) {
    host.in.current_time = time;
    EXPECT_FALSE(std::isfinite(FX_CopyTimeA(&host.in).frameFraction)) << time;
  }
}

}  // namespace
