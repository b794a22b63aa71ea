// Which frames a list and a share stand for.
#include "cli/scene/frame_range.h"

#include <gmock/gmock.h>

#include <numeric>

#include "tests/support/cli/expect_error.h"

namespace {

using cli::ExitCode;
using testing::ElementsAre;

TEST(Frames, AreListedInOrderEachOnce) {
  EXPECT_THAT(cli::ParseFrames("7"), ElementsAre(7));
  EXPECT_THAT(cli::ParseFrames("-5--3"), ElementsAre(-5, -4, -3));
  EXPECT_THAT(cli::ParseFrames("-1-1"), ElementsAre(-1, 0, 1));
  EXPECT_THAT(cli::ParseFrames("0008-0010,2,9,2147483647"), ElementsAre(8, 9, 10, 2, 2147483647));
  EXPECT_EQ(cli::ParseFrames("1-1000000").size(), cli::kMaxFrames);
  EXPECT_THAT(cli::ParseFrames("1-10x5,2,3-9x2"), ElementsAre(1, 6, 2, 3, 5, 7, 9));
  EXPECT_THAT(cli::ParseFrames("-4--1x2,7-7x100"), ElementsAre(-4, -2, 7));
  EXPECT_THAT(cli::ParseFrames("1-10y3,0--1"), ElementsAre(2, 3, 5, 6, 8, 9, 0, -1));
  EXPECT_THAT(cli::ParseFrames("10-0x4,7-4y3,5-9y1"), ElementsAre(10, 6, 2, 5));
  EXPECT_THAT(cli::ParseFrames("2147483646-2147483647x2147483647"), ElementsAre(2147483646));
}

TEST(Frames, RefuseWhatIsNotAList) {
  for (const char* text : {"", ",", "1,", "1-", "-", "--1", "a", "1-2-3", "1..3", "1 - 2", "+1", "1.5", "5x2",
                           "1-9x", "1-9x2x2", "1-9y", "1-9y2x2", "1-9 x2", "1x2-9"}) {
    ExpectError(ExitCode::kUsage, "is not a frame", [&] { cli::ParseFrames(text); });
  }
  ExpectError(ExitCode::kUsage, "2147483648", [] { cli::ParseFrames("2147483648"); });
  ExpectError(ExitCode::kUsage, "more than 1000000", [] { cli::ParseFrames("0-2147483647"); });
  ExpectError(ExitCode::kUsage, "more than 1000000", [] { cli::ParseFrames("0-2147483647x2"); });
  ExpectError(ExitCode::kUsage, "steps by 0", [] { cli::ParseFrames("0-9x0"); });
  ExpectError(ExitCode::kUsage, "steps by -2", [] { cli::ParseFrames("0-9x-2"); });
}

TEST(Parts, CoverEveryFrameOnceAndDifferByOneAtMost) {
  EXPECT_EQ(cli::ParsePart("3/10"), (cli::Part{3, 10}));
  EXPECT_THAT(cli::TakePart({5, 3, 9, 1, 7}, {2, 2}), ElementsAre(9, 1, 7));
  for (const std::size_t length : {0u, 1u, 6u, 7u, 100u}) {
    std::vector<std::int32_t> frames(length);
    std::iota(frames.begin(), frames.end(), -3);
    for (const std::size_t count : {1u, 2u, 3u, 7u, 9u}) {
      std::vector<std::int32_t> joined;
      for (std::size_t number = 1; number <= count; ++number) {
        const auto share = cli::TakePart(frames, {number, count});
        EXPECT_GE(share.size(), length / count) << length << ' ' << number << '/' << count;
        EXPECT_LE(share.size(), (length + count - 1) / count) << length << ' ' << number << '/' << count;
        joined.insert(joined.end(), share.begin(), share.end());
      }
      EXPECT_EQ(joined, frames);
    }
  }
  for (const char* text : {"", "3", "/", "3/", "/3", "0/3", "4/3", "-1/3", "1/3/5", "1 /3", "1/0", "1/x",
                           "1/1000001", "1/99999999999999999999"}) {
    ExpectError(ExitCode::kUsage, std::string("'") + text + "' is not a share",
                [&] { cli::ParsePart(text); });
  }
}

TEST(Frames, AreSpreadFromTheFirstToTheLast) {
  EXPECT_THAT(cli::SpreadFrames({1, 2, 3}, 5), ElementsAre(1, 2, 3));
  EXPECT_THAT(cli::SpreadFrames({1, 2, 3, 4, 5, 6, 7}, 4), ElementsAre(1, 3, 5, 7));
  EXPECT_THAT(cli::SpreadFrames({4, 5}, 1), ElementsAre(4));
}

}  // namespace
