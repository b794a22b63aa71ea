// Frame rates are exact.
#include "cli/scene/frame_rate.h"

#include <gtest/gtest.h>

namespace {

TEST(FrameRate, IsExact) {
  const struct {
    const char* text;
    std::int32_t scale;
    std::int32_t step;
  } cases[] = {{"24", 24, 1},
               {"12.5", 25, 2},
               {"23.976", 24000, 1001},
               {"23.98", 24000, 1001},
               {"29.97", 30000, 1001},
               {"24000/1001", 24000, 1001},
               {"48/2", 24, 1},
               {"29.98", 1499, 50},
               {"0.01", 1, 100},
               {"1000", 1000, 1},
               {"999.999999", 999999999, 1000000}};
  for (const auto& [text, scale, step] : cases) {
    const cli::FrameRate rate = cli::ParseFrameRate(text);
    EXPECT_EQ(rate.timeScale, scale) << text;
    EXPECT_EQ(rate.timeStep, step) << text;
  }
}

}  // namespace
