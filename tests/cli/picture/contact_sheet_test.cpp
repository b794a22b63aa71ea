// Every pixel of small sheets, put together by hand from their layout.
#include "cli/picture/contact_sheet.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string_view>

#include "cli/picture/digits.h"
#include "minihost/picture/copy.h"
#include "tests/support/cli/expect_error.h"

namespace {

using minihost::Depth;
using minihost::Image;

constexpr PF_Pixel kGround{255, 40, 40, 40};
constexpr PF_Pixel kNumber{255, 200, 200, 200};

void Fill(Image& image, const PF_Pixel& color, const PF_LRect& rect) {
  minihost::FillPixels(color, rect, image.World(), image.PixelDepth());
}

Image Filled(int width, int height, Depth depth, const PF_Pixel& color) {
  Image image(width, height, depth);
  Fill(image, color, {0, 0, width, height});
  return image;
}

void ExpectEqual(const Image& found, const Image& expected) {
  ASSERT_EQ(found.Width(), expected.Width());
  ASSERT_EQ(found.Height(), expected.Height());
  for (int row = 0; row < found.Height(); ++row) {
    const auto is = found.Row<PF_Pixel>(row);
    for (std::size_t column = 0; column < is.size(); ++column) {
      ASSERT_EQ(std::memcmp(&is[column], &expected.Row<PF_Pixel>(row)[column], sizeof is[column]), 0)
          << "row " << row << " column " << column;
    }
  }
}

TEST(ContactSheet, HasEachFrameOnItsGroundAndNumberInItsCell) {
  // Of 20 x 10 pixels in the file.  Three cells stand side by side, and one is left over.
  const struct {
    std::int32_t frame;
    PF_Pixel color;
    PF_Pixel shown;
    int column;
    int row;
  } cells[] = {{-7, {255, 250, 0, 9}, {255, 250, 0, 9}, 0, 0},
               {0, {0, 255, 255, 255}, kGround, 1, 0},
               {6, {128, 200, 0, 100}, {255, 120, 20, 70}, 2, 0},
               {9, {255, 0, 0, 0}, kGround, 0, 1},  // never comes
               {10, {51, 255, 0, 40}, {255, 83, 32, 40}, 1, 1}};
  const struct {
    double pixelAspect;
    int width;
    int height;
  } shapes[] = {{1, 20, 10}, {0.5, 10, 10}, {2, 20, 5}};
  for (const auto& [pixelAspect, width, height] : shapes) {
    for (const Depth depth : {Depth::kBits8, Depth::kBits16, Depth::kFloat}) {
      SCOPED_TRACE(testing::Message() << "aspect " << pixelAspect << " depth " << int(depth));
      // Eight pixels between cells, and a number of 7 under four.
      Image expected = Filled(3 * (width + 8) + 8, 2 * (height + 4 + 7 + 8) + 8, Depth::kBits8, kGround);
      cli::ContactSheet sheet({-7, 0, 6, 9, 10},
                              {.width = 20, .height = 10, .depth = depth, .pixelAspect = pixelAspect});
      for (const auto& [frame, color, shown, column, row] : cells) {
        const int left = 8 + column * (width + 8);
        const int top = 8 + row * (height + 19);
        Fill(expected, shown, {left, top, left + width, top + height});
        cli::DrawNumber(frame, left, top + height + 4, 1, kNumber, expected.World());
        if (frame != 9) {
          const std::vector<std::uint8_t> profile(static_cast<std::size_t>(frame < 0 ? 0 : frame + 1));
          sheet.Write(frame, sheet.Encode(frame, Filled(20, 10, depth, color), {.iccProfile = profile}));
        }
      }
      EXPECT_EQ(sheet.Sheet().traits.iccProfile.size(), 1u) << "the first that there is";
      ExpectEqual(sheet.Sheet().image, expected);
    }
  }
}

TEST(ContactSheet, StaysWithinItsLimits) {
  const struct {
    std::size_t frames;
    int width, height;            // of the source
    int sheetWidth, sheetHeight;  // with digits of 14 pixels under cells of 160 and more, else of 7
  } cases[] = {{1, 160, 90, 160 + 16, 90 + 4 + 14 + 16},
               {1, 159, 90, 159 + 16, 90 + 4 + 7 + 16},
               {2, 1920, 1080, 1920, 533 + 4 + 14 + 16},
               {4, 4, 1, 4 * 2 + 24, 2 * (1 + 4 + 7 + 8) + 8},
               {400, 1920, 1080, 20 * 87 + 21 * 8, 20 * (49 + 4 + 7 + 8) + 8}};
  for (const auto& c : cases) {
    std::vector<std::int32_t> frames(c.frames);
    const cli::ContactSheet sheet(frames, {.width = c.width, .height = c.height});
    EXPECT_EQ(sheet.Sheet().image.Width(), c.sheetWidth) << c.frames;
    EXPECT_EQ(sheet.Sheet().image.Height(), c.sheetHeight) << c.frames;
  }
  const auto refused = [](std::size_t frames, int height, const char* part) {
    ExpectError(cli::ExitCode::kUsage, part, [&] {
      cli::ContactSheet(std::vector<std::int32_t>(frames), {.width = 100, .height = height});
    });
  };
  refused(0, 100, "1 to 400 frames, not 0");
  refused(401, 100, "1 to 400 frames, not 401");
  refused(1, 32767, "32794 pixels high, but 32767");
}

TEST(Digits, LookLikeNumbers) {
  constexpr std::string_view kRows[] = {"        #    ###  #####    #  #####   ##  #####  ###   ###   ### ",
                                        "       ##   #   #    #    ##  #      #        # #   # #   # #   #",
                                        "        #       #   #    # #  ####  #        #  #   # #   # #  ##",
                                        "#####   #      #     #  #  #      # ####    #    ###   #### # # #",
                                        "        #     #       # #####     # #   #  #    #   #     # ##  #",
                                        "        #    #    #   #    #  #   # #   #  #    #   #    #  #   #",
                                        "       ###  #####  ###     #   ###   ###   #     ###   ##    ### "};
  for (const int scale : {1, 3}) {
    Image image = Filled(70 * scale, 9 * scale, Depth::kBits8, kGround);
    Image expected = Filled(70 * scale, 9 * scale, Depth::kBits8, kGround);
    for (int row = 0; row < 7; ++row) {
      for (int column = 0; column < 65; ++column) {
        if (kRows[row][static_cast<std::size_t>(column)] == '#') {
          const int left = (column + 1) * scale;
          const int top = (row + 1) * scale;
          Fill(expected, kNumber, {left, top, left + scale, top + scale});
        }
      }
    }
    cli::DrawNumber(-1234567890, scale, scale, scale, kNumber, image.World());
    ExpectEqual(image, expected);
  }
}

}  // namespace
