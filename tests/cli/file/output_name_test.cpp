// Names of the files of a sequence.
#include "cli/file/output_name.h"

#include <gtest/gtest.h>

namespace {

TEST(OutputName, PutsTheNumberInItsPlace) {
  const struct {
    const char* pattern;
    std::int32_t frame;
    const char* name;
  } cases[] = {{"out.####.png", 7, "out.0007.png"},
               {"out.#.png", 12, "out.0012.png"},
               {"##.exr", 123, "123.exr"},
               {"o.####.png", -7, "o.-0007.png"},
               {"out.%04d.png", 7, "out.0007.png"},
               {"out.%04d.png", -7, "out.-007.png"},
               {"out%d.tif", 42, "out42.tif"},
               {"out%3d.tif", 42, "out 42.tif"},
               {"a/b#/out.####.png", 1, "a/b#/out.0001.png"},
               {"/r/100%.png", 5, "/r/100%.png"},
               {"####", -2147483647 - 1, "-2147483648"},
               {"{}#.png", 1, "{}0001.png"},
               {"o.@@@.png", 7, "o.007.png"},
               {"me@home.##.png", 7, "me@home.07.png"},
               {"take#3.%02d.png", 7, "take#3.07.png"},
               {"take\\#3\\@@@.png", 7, "take#3@07.png"}};
  EXPECT_EQ(cli::OutputName("a\\#1\\b@c.png").ForFrame(7), "a#1\\b@c.png");
  for (const auto& [pattern, frame, name] : cases) {
    EXPECT_EQ(cli::OutputName(pattern).ForFrame(frame), name) << pattern;
    EXPECT_EQ(cli::OutputName(pattern).IsPattern(), std::string(pattern) != name) << pattern;
    const std::string file = std::filesystem::path(name).filename();
    EXPECT_TRUE(cli::OutputName(pattern).Makes(file)) << pattern;
    EXPECT_FALSE(cli::OutputName(pattern).Makes('0' + file)) << pattern;
  }
  EXPECT_EQ(cli::OutputName("a/out.v2.png").SuggestedPattern(), "a/out.v2.####.png");
}

}  // namespace
