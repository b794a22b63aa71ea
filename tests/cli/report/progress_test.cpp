// What a run says about its progress, by a clock of the test's own.
#include "cli/report/progress.h"

#include <gmock/gmock.h>

namespace {

using cli::ProgressColor;
using cli::ProgressStyle;

TEST(Progress, Texts) {
  const struct {
    double seconds;
    const char* text;
  } durations[] = {{0, "0:00"},       {6.2, "0:07"}, {59.5, "1:00"},
                   {3723, "1:02:03"}, {1e9, "-:--"}, {-1, "-:--"}};
  for (const auto& [seconds, text] : durations) {
    EXPECT_EQ(cli::FormatDuration(seconds), text);
  }

  const cli::ProgressState state{.frame = -7, .done = 60, .total = 240, .seconds = 20};
  EXPECT_EQ(FormatLine(state), "60 of 240 frames, 3.0 fps, 1:00 left");
  EXPECT_EQ(FormatJson(state), R"({"frame":-7,"done":60,"total":240,"fps":3.000})");
  EXPECT_EQ(FormatBar(state, 50, ProgressColor::kPlain),
            "[===>               ]   60/240  3.0 fps  1:00 left");
  EXPECT_EQ(FormatBar(state, 30, ProgressColor::kPlain), " 60/240  3.0 fps  1:00 left");
  EXPECT_EQ(FormatBar(state, 10, ProgressColor::kPlain), " 60/240  3");
  EXPECT_THAT(FormatBar(state, 50, ProgressColor::kColored), testing::HasSubstr("[\x1b[36m===>\x1b[0m "));
  EXPECT_EQ(FormatBar({.done = 2, .total = 2, .seconds = 1}, 39, ProgressColor::kPlain),
            "[============]  2/2  2.0 fps  0:00 left");
  EXPECT_EQ(cli::FormatLine({.total = 3}), "0 of 3 frames, 0.0 fps, -:-- left");
}

}  // namespace
