// The grid of reduced frames with their numbers.
#include "cli/contact_sheet.h"

#include <gmock/gmock.h>

#include "minihost/copy.h"
#include "tests/cli/expect_error.h"

namespace {

using minihost::Depth;
using minihost::Image;
using testing::ElementsAre;

TEST(ContactSheet, SpreadsFramesFromTheFirstToTheLast) {
  EXPECT_THAT(cli::SpreadFrames({1, 2, 3}, 5), ElementsAre(1, 2, 3));
  EXPECT_THAT(cli::SpreadFrames({1, 2, 3, 4, 5, 6, 7}, 4), ElementsAre(1, 3, 5, 7));
  EXPECT_THAT(cli::SpreadFrames({4, 5}, 1), ElementsAre(4));
}

}  // namespace
