// Codes of luma and chroma to colours and back.
#include "cli/video_pixels.h"

#include <gtest/gtest.h>

#include <random>

#include "cli/sample_convert.h"

namespace {

using namespace cli;
using minihost::Depth;
using minihost::Image;

constexpr Depth kDepths[] = {Depth::kBits8, Depth::kBits16, Depth::kFloat};

template <class Sample>
Sample* RowOf(const AVFrame& frame, int plane, int row) {
  return reinterpret_cast<Sample*>(frame.data[plane] + row * frame.linesize[plane]);
}

/// Calls `visit(sample, plane)` for all samples in step through planar frames of one size.
template <class Sample, class Visit, class... Frames>
void VisitSamples(int planes, int chromaShift, Visit visit, const AVFrame& first, const Frames&... others) {
  for (int plane = 0; plane < planes; ++plane) {
    const int shift = plane == 1 || plane == 2 ? chromaShift : 0;
    for (int row = 0; row < AV_CEIL_RSHIFT(first.height, shift); ++row) {
      for (int column = 0; column < AV_CEIL_RSHIFT(first.width, shift); ++column) {
        visit(plane, RowOf<Sample>(first, plane, row)[column], RowOf<Sample>(others, plane, row)[column]...);
      }
    }
  }
}

// With colours that RGB can show nothing moves, at hard edges neither.
TEST(VideoPixels, KeepTheirCodes) {
  std::mt19937 random(7);
  const auto any = [&](int low, int high) { return std::uniform_int_distribution(low, high)(random); };
  for (const AVColorSpace matrix : {AVCOL_SPC_BT709, AVCOL_SPC_SMPTE170M, AVCOL_SPC_BT2020_NCL}) {
    const YuvCoding coding{matrix, AVCOL_RANGE_MPEG};
    for (const Depth depth : kDepths) {
      const auto copy = [&](const AVFrame& frame) {
        auto back = AllocateFrame(static_cast<AVPixelFormat>(frame.format), frame.width, frame.height);
        EncodePixels(DecodePixels(frame, coding, depth, AlphaForm::kStraight), matrix, *back);
        return back;
      };
      const auto small = AllocateFrame(AV_PIX_FMT_YUV420P, 66, 46);
      VisitSamples<std::uint8_t>(
          3, 1,
          [&](int plane, std::uint8_t& code) {
            code = static_cast<std::uint8_t>(plane ? any(108, 148) : any(70, 180));
          },
          *small);
      VisitSamples<std::uint8_t>(
          3, 1, [&](int plane, int was, int is) { ASSERT_EQ(was, is) << matrix << plane; }, *small,
          *copy(*small));
      if (depth == Depth::kBits8) continue;
      const auto fine = AllocateFrame(AV_PIX_FMT_YUVA444P10, 5, 3);
      VisitSamples<std::uint16_t>(
          4, 0,
          [&](int plane, std::uint16_t& code) {
            code = static_cast<std::uint16_t>(plane == 3 ? any(0, 1023) : any(450, 570));
          },
          *fine);
      VisitSamples<std::uint16_t>(
          4, 0, [&](int plane, int was, int is) { ASSERT_EQ(was, is) << matrix << plane; }, *fine,
          *copy(*fine));
    }
  }
}

// White, black and red as the standards tabulate them, in every depth; the blocks of an odd size too.
TEST(VideoPixels, HaveTheColorsOfTheStandards) {
  struct Case {
    AVPixelFormat format;
    YuvCoding coding;
    int codes[3];
    double red, green, blue;
  };
  const YuvCoding hd{AVCOL_SPC_BT709, AVCOL_RANGE_MPEG};
  const YuvCoding sd{AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG};
  const YuvCoding full{AVCOL_SPC_BT470BG, AVCOL_RANGE_JPEG};
  const Case cases[] = {
      {AV_PIX_FMT_YUV420P, hd, {235, 128, 128}, 1, 1, 1},
      {AV_PIX_FMT_YUV420P, hd, {16, 128, 128}, 0, 0, 0},
      {AV_PIX_FMT_YUV420P, hd, {63, 102, 240}, 1, 0, 0},
      {AV_PIX_FMT_YUV420P, sd, {81, 90, 240}, 1, 0, 0},
      {AV_PIX_FMT_YUV420P, full, {76, 85, 255}, 1, 0, 0},
      {AV_PIX_FMT_YUV444P10, hd, {940, 512, 512}, 1, 1, 1},
      {AV_PIX_FMT_YUV444P10, full, {1023, 512, 512}, 1, 1, 1},
      {AV_PIX_FMT_YUV444P10, full, {512, 512, 512}, 512 / 1023.0, 512 / 1023.0, 512 / 1023.0}};
  for (const Case& c : cases) {
    const bool wide = c.format == AV_PIX_FMT_YUV444P10;
    const auto frame = AllocateFrame(c.format, 7, 5);
    // The rest is grey, and the last column and row are blocks of their own.
    const auto fill = [&](int plane, auto& code, bool last) {
      using Sample = std::decay_t<decltype(code)>;
      code = static_cast<Sample>(last ? c.codes[plane] : wide ? 512 : 128);
    };
    for (int plane = 0; plane < 3; ++plane) {
      const int shift = plane && !wide ? 1 : 0;
      const int columns = AV_CEIL_RSHIFT(7, shift);
      for (int row = 0; row < AV_CEIL_RSHIFT(5, shift); ++row) {
        for (int x = 0; x < columns; ++x) {
          if (wide) fill(plane, RowOf<std::uint16_t>(*frame, plane, row)[x], x == columns - 1);
          if (!wide) fill(plane, RowOf<std::uint8_t>(*frame, plane, row)[x], x == columns - 1);
        }
      }
    }
    for (const Depth depth : kDepths) {
      const Image image = DecodePixels(*frame, c.coding, depth, AlphaForm::kStraight);
      minihost::WithPixel(depth, [&]<class Pixel>(Pixel) {
        const auto near = [&](auto channel, double expected) {
          const double is = ConvertSample<ToOne, WayOf<Pixel>>(channel);
          // Red's own codes are rounded to 8 bits.
          EXPECT_NEAR(is, expected, depth == Depth::kBits8 || c.blue != c.red ? 1.5 / 255 : 1.01e-4)
              << c.codes[0] << " depth " << static_cast<int>(depth);
        };
        for (const int row : {0, 4}) {
          const Pixel pixel = image.Row<Pixel>(row)[6];
          near(pixel.red, c.red);
          near(pixel.green, c.green);
          near(pixel.blue, c.blue);
          const Pixel grey = image.Row<Pixel>(row)[5];
          near(grey.red, ConvertSample<ToOne, WayOf<Pixel>>(grey.blue));
        }
      });
    }
  }
}

// Snow is white: exactly nominal white, half of it over black exactly half, and chroma the mean of its block.
TEST(VideoPixels, WriteNominalWhiteAndMeans) {
  for (const Depth depth : kDepths) {
    Image image(6, 4, depth, minihost::Clearing::kTransparentBlack);
    minihost::WithPixel(depth, [&]<class Pixel>(Pixel) {
      const auto white = ConvertSample<WayOf<Pixel>, ToOne>(1.0f);
      const auto half = ConvertSample<WayOf<Pixel>, ToOne>(0.5f);
      for (int row = 0; row < 4; ++row) {
        for (std::size_t x = 0; x < 6; ++x) {
          image.Row<Pixel>(row)[x] =
              x < 2 ? Pixel{white, white, white, white} : Pixel{half, white, white, white};
        }
      }
      image.Row<Pixel>(0)[4] = Pixel{white, 0, 0, white};
    });
    const auto small = AllocateFrame(AV_PIX_FMT_YUV420P, 6, 4);
    EncodePixels(image, AVCOL_SPC_BT709, *small);
    EXPECT_EQ(RowOf<std::uint8_t>(*small, 0, 0)[0], 235);
    EXPECT_NEAR(RowOf<std::uint8_t>(*small, 0, 3)[5], 126, 1);
    EXPECT_EQ(RowOf<std::uint8_t>(*small, 1, 1)[2], 128);
    EXPECT_NEAR(RowOf<std::uint8_t>(*small, 1, 0)[2], 128 + (240 - 128) / 4, 1) << "one of four is blue";
    const auto fine = AllocateFrame(AV_PIX_FMT_YUVA444P10, 6, 4);
    EncodePixels(image, AVCOL_SPC_BT709, *fine);
    EXPECT_EQ(RowOf<std::uint16_t>(*fine, 0, 3)[5], 940) << "straight";
    EXPECT_EQ(RowOf<std::uint16_t>(*fine, 3, 3)[0], 1023);
    EXPECT_NEAR(RowOf<std::uint16_t>(*fine, 3, 3)[5], 512, 2);
  }
}

}  // namespace
