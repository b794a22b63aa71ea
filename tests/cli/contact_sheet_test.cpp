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

TEST(ContactSheet, HoldsEveryFrameInItsCell) {
  cli::SourceTraits traits;
  traits.width = 1000;
  traits.height = 500;
  traits.pixelAspect = 2;
  for (const Depth depth : {Depth::kBits8, Depth::kBits16, Depth::kFloat}) {
    SCOPED_TRACE(int(depth));
    cli::ContactSheet sheet({1, 2, 3, 4, 5}, traits);
    for (const std::uint8_t frame : std::vector<std::uint8_t>{1, 2, 4, 5}) {
      Image image(1000, 500, depth);
      const PF_LayerDef world = image.World();
      const PF_Pixel color{static_cast<std::uint8_t>(frame == 5 ? 0 : 255), frame, 200, 0};
      minihost::FillPixels(color, minihost::BoundsOf(world), world, depth);
      sheet.Write(frame, sheet.Encode(frame, image, {.iccProfile = {frame}}));
    }
    EXPECT_EQ(sheet.Sheet().traits.iccProfile, std::vector<std::uint8_t>{1});
    // Three columns of (1920 - 8) / 3 - 8 pixels, a quarter as high; a number of two pixels a dot under each.
    constexpr int kWidth = 629;
    constexpr int kHeight = 157;
    constexpr int kRow = kHeight + 4 + 7 * 2 + 8;
    const Image& image = sheet.Sheet().image;
    EXPECT_EQ(image.width(), 8 + 3 * (kWidth + 8));
    EXPECT_EQ(image.height(), 8 + 2 * kRow);
    const auto at = [&](int x, int y) {
      const PF_Pixel& pixel = image.Row<PF_Pixel>(y)[static_cast<std::size_t>(x)];
      return std::vector<int>{pixel.alpha, pixel.red, pixel.green, pixel.blue};
    };
    for (int frame = 1; frame <= 5; ++frame) {
      const int left = 8 + (frame - 1) % 3 * (kWidth + 8);
      const int top = 8 + (frame - 1) / 3 * kRow;
      const std::vector<int> ground = {255, 40, 40, 40};
      // One did not come, one is transparent.
      const auto color = frame == 3 || frame == 5 ? ground : std::vector<int>{255, frame, 200, 0};
      EXPECT_EQ(at(left, top), color) << frame;
      EXPECT_EQ(at(left + kWidth - 1, top + kHeight - 1), color) << frame;
      EXPECT_EQ(at(left - 1, top), ground) << frame;
      EXPECT_EQ(at(left, top + kHeight), ground) << frame;
      // The lowest row of dots tells 1 and 2 from each other and both from nothing.
      const std::vector<int> ink = {255, 200, 200, 200};
      EXPECT_EQ(at(left + 4, top + kHeight + 4 + 6 * 2), frame != 4 ? ink : ground) << frame;
      EXPECT_EQ(at(left, top + kHeight + 4 + 6 * 2), frame == 2 ? ink : ground) << frame;
    }
  }
  ExpectError(cli::ExitCode::kUsage, "not 0", [&] { cli::ContactSheet({}, traits); });
  traits.height = 2'000'000;
  ExpectError(cli::ExitCode::kUsage, "but 32767", [&] { cli::ContactSheet({1}, traits); });
}

}  // namespace
