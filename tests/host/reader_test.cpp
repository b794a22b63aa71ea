// Parameters at any time, and the split of the current time.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>

#include "effect/host/parameter_readers.h"
#include "effect/host/time_copy.h"
#include "tests/support/recording_host.h"

namespace {

TEST(Readers, CheckOutAndInAtOnceAndGiveTheDefaultWhereTheHostRefuses) {
  for (const bool refused : {false, true}) {
    RecordingHost host;
    if (refused) {
      host.Refuse("checkout");
    }
    host.params[2].u.fs_d.value = 0.1;
    host.params[31].u.sd.value = INT_MIN;
    host.params[25].u.pd.value = 7;
    host.params[26].u.bd.value = 0;
    host.params[15].u.bd.value = 2;
    host.params[18].u.cd.value = {0, 10, 20, 30};
    host.params[28].u.td = {3309568, -32768, 0, 0, 0};
    std::string calls;
    const auto read = [&](auto reader, int index) {
      const std::string number = std::to_string(index);
      calls += "checkout " + number + " @-7/9/4000000000\n" + (refused ? "" : "checkin " + number + "\n");
      return reader(&host.in, index, -7, 9, 4000000000u);
    };
    EXPECT_EQ(read(Get_Float_Slider, 2), refused ? 3.0 : 0.1);
    EXPECT_EQ(read(Get_Int_Slider, 31), refused ? 0 : INT_MIN);
    EXPECT_EQ(read(Get_PopUp, 25), refused ? 2 : 7);
    EXPECT_EQ(read(Get_Checkbox, 26), refused);
    EXPECT_TRUE(read(Get_Checkbox, 15));
    const auto [alpha, red, green, blue] = read(Get_Color, 18);
    EXPECT_EQ(alpha * 1000 + red, refused ? 255255 : 255010);
    EXPECT_EQ(green * 1000 + blue, refused ? 255255 : 20030);
    const auto [x, y] = read(Get_Point, 28);
    EXPECT_EQ(std::pair(x, y), refused ? std::pair(50.0, 50.0) : std::pair(50.5, -0.5));
    for (const int undeclared : {-1, 0, 33}) {
      EXPECT_TRUE(!refused || read(Get_Float_Slider, undeclared) == 0.0);
    }
    EXPECT_EQ(host.log, calls);
    EXPECT_EQ(host.Outstanding(), "");
  }
}

TEST(CopyTime, SplitsTheTimeIntoWholeAndFraction) {
  const std::tuple<int, int, int, int, double> rows[] = {
      {1001, 100, 1000, 1, 0.01}, {1000, 100, 1000, 0, 0.0},    {-250, 100, -200, -50, -0.5},
      {250, -100, 200, 50, -0.5}, {INT_MIN, -1, INT_MIN, 0, 0}, {5, 0, 0, 5, INFINITY}};
  RecordingHost host;
  host.in.shutter_angle = -49152;
  for (const auto& row : rows) {
    std::tie(host.in.current_time, host.in.local_time_step, std::ignore, std::ignore, std::ignore) = row;
    const TimeCopy time = FX_CopyTimeA(&host.in);
    EXPECT_EQ(
        std::tuple(time.renderTime, time.localTimeStep, time.wholeTime, time.fracTime, time.frameFraction),
        row);
    EXPECT_EQ(std::tuple(time.timeScale, time.timeStep, time.shutterAngle), std::tuple(1000u, 100, -0.75));
  }
}

}  // namespace
