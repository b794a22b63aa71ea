// What a run says about its progress, by a clock of the test's own.
#include "cli/report/progress.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

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

  const cli::ProgressState state{.done = 60, .total = 240, .seconds = 20};
  EXPECT_EQ(FormatLine(state), "60 of 240 frames, 3.0 fps, 1:00 left");
  EXPECT_EQ(FormatJson(state, {-7, "failed", "a\"\xff.png", "why"}),
            R"({"event":"frame","frame":-7,"status":"failed","path":"a\"�.png","reason":"why",)"
            "\"done\":60,\"total\":240,\"fps\":3.0}\n");
  EXPECT_EQ(FormatBar(state, 50, ProgressColor::kPlain),
            "[===>               ]   60/240  3.0 fps  1:00 left");
  EXPECT_EQ(FormatBar(state, 30, ProgressColor::kPlain), " 60/240  3.0 fps  1:00 left");
  EXPECT_EQ(FormatBar(state, 10, ProgressColor::kPlain), " 60/240  3");
  EXPECT_THAT(FormatBar(state, 50, ProgressColor::kColored), testing::HasSubstr("[\x1b[36m===>\x1b[0m "));
  EXPECT_EQ(FormatBar({.done = 2, .total = 2, .seconds = 1}, 39, ProgressColor::kPlain),
            "[============]  2/2  2.0 fps  0:00 left");
  EXPECT_EQ(cli::FormatLine({.total = 3}), "0 of 3 frames, 0.0 fps, -:-- left");
}

TEST(Progress, WritesAsOftenAsItsStyleSays) {
  const struct {
    ProgressStyle style;
    double frameSeconds;
    std::size_t writes;
    const char* last;
  } cases[] = {
      {ProgressStyle::kNone, 20, 0, ""},
      {ProgressStyle::kLines, 0.25, 0, ""},
      {ProgressStyle::kLines, 4, 6, "18 of 20 frames, 0.2 fps, 0:08 left\n"},
      {ProgressStyle::kJson, 0.25, 20,
       "{\"event\":\"frame\",\"frame\":26,\"status\":\"written\",\"path\":\"\",\"done\":20,\"total\":20,"
       "\"fps\":"
       "4.0}\n"},
      // The first bar, one a tenth of a second, and in the end none.
      {ProgressStyle::kBar, 0.0625, 12, "\r\x1b[K"},
      {ProgressStyle::kBar, 1, 22, "\r\x1b[K"},
  };
  for (const auto& [style, frameSeconds, count, last] : cases) {
    SCOPED_TRACE(testing::Message() << int(style) << " at " << frameSeconds);
    double now = 1000;
    std::vector<std::string> writes;
    {
      cli::Progress progress(style, 20,
                             {.write = [&](const std::string& text) { writes.push_back(text); },
                              .clock = [&] { return now; },
                              .width = [] { return 44; }});
      for (std::int32_t frame = 7; frame < 27; ++frame) {
        now += frameSeconds;
        progress.FrameDone({frame, "written"});
      }
    }
    EXPECT_EQ(writes.size(), count);
    EXPECT_EQ(writes.empty() ? "" : writes.back(), last);
    if (style == ProgressStyle::kBar) {
      EXPECT_EQ(writes.front(), "\r\x1b[K[              ]   0/20  0.0 fps  -:-- left");
    }
  }
  using cli::ProgressWish;
  EXPECT_EQ(cli::StyleFor(ProgressWish::kNone), ProgressStyle::kNone);
  EXPECT_EQ(cli::StyleFor(ProgressWish::kJson), ProgressStyle::kJson);
  EXPECT_NE(cli::StyleFor(ProgressWish::kText), ProgressStyle::kNone);
}

}  // namespace
