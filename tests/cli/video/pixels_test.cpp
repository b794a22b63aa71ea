// Codes of luma and chroma to colours and back.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "cli/video/module/fast_convert.h"
#include "cli/video/module/pixels_in.h"
#include "cli/video/module/pixels_out.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace {

using namespace cli;
using minihost::Depth;
using minihost::Image;

constexpr Depth kDepths[] = {Depth::kBits8, Depth::kBits16, Depth::kFloat};

/// A planar frame of luma and chroma by its codes.
struct Codes {
  Codes(AVPixelFormat format, int width, int height) : frame(AllocateFrame(format, width, height)) {}

  const AVPixFmtDescriptor& Desc() const {
    return *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame->format));
  }
  bool IsSmall() const { return frame->format == AV_PIX_FMT_YUV420P; }
  bool IsBytes() const { return Desc().comp[0].depth == 8; }
  std::uint8_t* Row(int plane, int row) const { return frame->data[plane] + row * frame->linesize[plane]; }
  int Get(int plane, int row, int column) const {
    return IsBytes() ? Row(plane, row)[column] : reinterpret_cast<std::uint16_t*>(Row(plane, row))[column];
  }
  /// The code that a pixel has a share in.
  int OfPixel(int plane, int row, int column) const {
    return plane ? Get(plane, row >> Desc().log2_chroma_h, column >> Desc().log2_chroma_w)
                 : Get(plane, row, column);
  }
  /// Every code from `make(plane, column)`.
  template <class Make>
  void Fill(Make make) {
    Visit([&](int plane, int row, int column) {
      const int code = make(plane, column);
      if (IsBytes()) {
        Row(plane, row)[column] = static_cast<std::uint8_t>(code);
      } else {
        reinterpret_cast<std::uint16_t*>(Row(plane, row))[column] = static_cast<std::uint16_t>(code);
      }
    });
  }
  template <class Visitor>
  void Visit(Visitor visit) const {
    for (int plane = 0; plane < Desc().nb_components; ++plane) {
      const bool isChroma = plane == 1 || plane == 2;
      const int height = AV_CEIL_RSHIFT(frame->height, isChroma ? Desc().log2_chroma_h : 0);
      const int width = AV_CEIL_RSHIFT(frame->width, isChroma ? Desc().log2_chroma_w : 0);
      for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
          visit(plane, row, column);
        }
      }
    }
  }
  AvFrame frame;
};

// With colours that RGB can show nothing moves, at hard edges neither.
TEST(VideoPixels, KeepTheirCodes) {
  std::mt19937 random(7);
  const auto any = [&](int low, int high) { return std::uniform_int_distribution(low, high)(random); };
  for (const AVColorSpace matrix : {AVCOL_SPC_BT709, AVCOL_SPC_SMPTE170M, AVCOL_SPC_BT2020_NCL}) {
    for (const Depth depth : kDepths) {
      const auto check = [&](const Codes& was) {
        Codes is(static_cast<AVPixelFormat>(was.frame->format), was.frame->width, was.frame->height);
        const YuvCoding coding{matrix, AVCOL_RANGE_MPEG};
        EncodePixels(DecodePixels(*was.frame, coding, depth, AlphaForm::kStraight), matrix, *is.frame);
        was.Visit([&](int plane, int row, int column) {
          ASSERT_EQ(was.Get(plane, row, column), is.Get(plane, row, column)) << matrix << " plane " << plane;
        });
      };
      Codes small(AV_PIX_FMT_YUV420P, 66, 66);  // two rows more than whole strips
      small.Fill([&](int plane, int) { return plane ? any(108, 148) : any(70, 180); });
      check(small);
      if (depth == Depth::kBits8) {
        continue;
      }
      Codes fine(AV_PIX_FMT_YUVA444P10, 5, 3);
      fine.Fill([&](int plane, int) { return plane == 3 ? any(0, 1023) : any(450, 570); });
      check(fine);
    }
  }
}

// Colours as the standards tabulate them, in a last column that is a block of its own beside grey.
TEST(VideoPixels, HaveTheColorsOfTheStandards) {
  struct Case {
    AVPixelFormat format;
    YuvCoding coding;
    std::array<int, 3> codes;
    std::array<double, 3> color;
    double tolerance;
  };
  const YuvCoding high{AVCOL_SPC_BT709, AVCOL_RANGE_MPEG};
  const YuvCoding standard{AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG};
  const YuvCoding full{AVCOL_SPC_BT470BG, AVCOL_RANGE_JPEG};
  constexpr double kRounded = 2.0 / 255;  // the code itself is
  constexpr double kFine = 1e-4;
  const Case cases[] = {{AV_PIX_FMT_YUV420P, high, {235, 128, 128}, {1, 1, 1}, kFine},
                        {AV_PIX_FMT_YUV420P, high, {16, 128, 128}, {0, 0, 0}, kFine},
                        {AV_PIX_FMT_YUV420P, high, {63, 102, 240}, {1, 0, 0}, kRounded},
                        {AV_PIX_FMT_YUV420P, standard, {81, 90, 240}, {1, 0, 0}, kRounded},
                        {AV_PIX_FMT_YUV420P, full, {76, 85, 255}, {1, 0, 0}, kRounded},
                        {AV_PIX_FMT_YUV444P10, high, {940, 512, 512}, {1, 1, 1}, kFine},
                        {AV_PIX_FMT_YUV444P10, full, {1023, 512, 512}, {1, 1, 1}, kFine}};
  for (const Case& c : cases) {
    Codes codes(c.format, 7, 5);
    codes.Fill([&](int plane, int column) {
      const bool last = column == (codes.IsSmall() && plane ? 3 : 6);
      return last ? c.codes[static_cast<std::size_t>(plane)] : codes.IsSmall() ? 128 : 512;
    });
    for (const Depth depth : kDepths) {
      const Image image = DecodePixels(*codes.frame, c.coding, depth, AlphaForm::kStraight);
      minihost::WithPixel(depth, [&]<class Pixel>(Pixel) {
        const Pixel last = image.Row<Pixel>(4)[6];
        const std::array found{last.red, last.green, last.blue};
        for (std::size_t i = 0; i < 3; ++i) {
          EXPECT_NEAR((ConvertSample<ToOne, WayOf<Pixel>>(found[i])), c.color[i], c.tolerance)
              << c.codes[0] << " depth " << static_cast<int>(depth);
        }
        EXPECT_EQ(image.Row<Pixel>(4)[5].red, image.Row<Pixel>(4)[5].blue) << "grey beside it";
      });
    }
  }
}

// What a file holds comes out straight, and in the least depth that loses nothing.
TEST(VideoPixels, AreStraightAndOfTheLeastDepth) {
  const AvFrame frame = AllocateFrame(AV_PIX_FMT_BGRA, 3, 1);
  const std::array<std::uint8_t, 12> bytes{32, 64, 128, 128, 7, 8, 9, 0, 1, 2, 3, 255};
  std::ranges::copy(bytes, frame->data[0]);
  const AvFrame bits = AllocateFrame(AV_PIX_FMT_MONOWHITE, 3, 1);
  bits->data[0][0] = 0b01000000;
  const auto pixelsOf = [](const AVFrame& from, AlphaForm form) {
    std::vector<std::array<int, 4>> pixels;
    const Image image = DecodePixels(from, {}, Depth::kBits8, form);
    for (const PF_Pixel& pixel : image.Row<PF_Pixel>(0)) {
      pixels.push_back({pixel.alpha, pixel.red, pixel.green, pixel.blue});
    }
    return pixels;
  };
  using Pixels = std::vector<std::array<int, 4>>;
  EXPECT_EQ(pixelsOf(*frame, AlphaForm::kStraight),
            (Pixels{{128, 128, 64, 32}, {0, 9, 8, 7}, {255, 3, 2, 1}}));
  EXPECT_EQ(pixelsOf(*frame, AlphaForm::kPremultiplied),
            (Pixels{{128, 255, 128, 64}, {0, 9, 8, 7}, {255, 3, 2, 1}}));
  EXPECT_EQ(pixelsOf(*bits, AlphaForm::kStraight),
            (Pixels{{255, 255, 255, 255}, {255, 0, 0, 0}, {255, 255, 255, 255}}));
  EXPECT_EQ(DepthOf(AV_PIX_FMT_BGRA), Depth::kBits8);
  EXPECT_EQ(DepthOf(AV_PIX_FMT_YUV420P10), Depth::kBits16);
  EXPECT_EQ(DepthOf(AV_PIX_FMT_GBRP16), Depth::kFloat) << "white is 32768 in 16 bits";
  EXPECT_EQ(DepthOf(AV_PIX_FMT_GBRPF32), Depth::kFloat);
}

// Snow is nominal white, the picture lies over black, and chroma is the mean of its block.
TEST(VideoPixels, WriteNominalWhiteAndMeans) {
  for (const Depth depth : kDepths) {
    Image image(6, 4, depth, minihost::Clearing::kTransparentBlack);
    minihost::WithPixel(depth, [&]<class Pixel>(Pixel) {
      const auto white = ConvertSample<WayOf<Pixel>, ToOne>(1.0f);
      const auto half = ConvertSample<WayOf<Pixel>, ToOne>(0.5f);
      for (int row = 0; row < 4; ++row) {
        for (std::size_t x = 0; x < 6; ++x) {
          image.Row<Pixel>(row)[x] = {x < 2 ? white : half, white, white, white};
        }
      }
      image.Row<Pixel>(0)[4] = {white, 0, 0, white};
    });
    const Codes small(AV_PIX_FMT_YUV420P, 6, 4);
    EncodePixels(image, AVCOL_SPC_BT709, *small.frame);
    EXPECT_EQ(small.Get(0, 0, 0), 235);
    EXPECT_NEAR(small.Get(0, 3, 5), 126, 1);
    EXPECT_NEAR(small.Get(1, 0, 2), 128 + (240 - 128) / 4, 1) << "one of four is blue";
    const Codes fine(AV_PIX_FMT_YUVA444P10, 6, 4);
    EncodePixels(image, AVCOL_SPC_BT709, *fine.frame);
    EXPECT_EQ(fine.Get(0, 3, 5), 940);
    EXPECT_EQ(fine.Get(3, 3, 0), 1023);
    EXPECT_NEAR(fine.Get(3, 3, 5), 512, 2);
  }
}

// The quick ways to count are the plain one, for every code; pixels come apart at any width.
TEST(VideoPixels, CountQuicklyAsPlainly) {
  for (std::uint32_t i = 0; i <= 65535; ++i) {
    const auto code = static_cast<std::uint16_t>(i);
    ASSERT_EQ((FastConvert<To65280, To32768>(code)), (ConvertSample<To65280, To32768>(code))) << i;
    ASSERT_EQ((FastConvert<To65535, To32768>(code)), (ConvertSample<To65535, To32768>(code))) << i;
    ASSERT_EQ((FastConvert<To255, To32768>(code)), (ConvertSample<To255, To32768>(code))) << i;
    ASSERT_EQ((FastConvert<To32768, To65280>(code)), FromFraction<To32768>(i / 65280.0)) << i;
    const float value = static_cast<float>(i) / 32768 - 0.5f;
    ASSERT_EQ((FastConvert<To65535, ToOne>(value)), (ConvertSample<To65535, ToOne>(value))) << value;
  }
  EXPECT_EQ((FastConvert<To65535, ToOne>(std::numeric_limits<float>::quiet_NaN())), 0);
  std::vector<PF_Pixel16> pixels(21);
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    const auto number = static_cast<std::uint16_t>(i);
    pixels[i] = {9, number, static_cast<std::uint16_t>(100 + i), static_cast<std::uint16_t>(40'000 + i)};
  }
  std::array<std::array<std::uint16_t, 21>, 3> planes{};
  SplitColors(pixels.data(), pixels.size(), planes[0].data(), planes[1].data(), planes[2].data());
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    EXPECT_EQ(planes[0][i], pixels[i].red);
    EXPECT_EQ(planes[1][i], pixels[i].green);
    EXPECT_EQ(planes[2][i], pixels[i].blue);
  }
}

// Every matrix, range, depth and grid of chroma against the formula of the standards in double precision:
// within a step of 8 bits, or a tenth of one in the fine formats.
TEST(VideoPixels, FollowTheFormula) {
  struct Weights {
    AVColorSpace matrix;
    double red;
    double blue;
  };
  const Weights matrices[] = {{AVCOL_SPC_BT709, 0.2126, 0.0722},
                              {AVCOL_SPC_SMPTE170M, 0.299, 0.114},
                              {AVCOL_SPC_BT2020_NCL, 0.2627, 0.0593}};
  std::mt19937 random(11);
  for (const AVPixelFormat format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUV422P10,
                                     AV_PIX_FMT_YUV420P10, AV_PIX_FMT_YUV444P12}) {
    for (const Weights& weights : matrices) {
      for (const AVColorRange range : {AVCOL_RANGE_MPEG, AVCOL_RANGE_JPEG}) {
        Codes codes(format, 38, 66);
        const int bits = codes.Desc().comp[0].depth;
        const int step = 1 << (bits - 8);
        const int most = (1 << bits) - 1;
        const bool isFull = range == AVCOL_RANGE_JPEG;
        codes.Fill([&](int plane, int) {
          return std::uniform_int_distribution((plane ? 112 : 90) * step, (plane ? 144 : 165) * step)(random);
        });
        const Depth depth = bits == 8 ? Depth::kBits8 : Depth::kBits16;
        const Image image = DecodePixels(*codes.frame, {weights.matrix, range}, depth, AlphaForm::kStraight);
        double worst = 0;
        minihost::WithPixel(depth, [&]<class Pixel>(Pixel) {
          for (int row = 0; row < image.Height(); ++row) {
            for (int column = 0; column < image.Width(); ++column) {
              const double chroma = isFull ? most : 224 * step;
              const double luma = isFull ? codes.OfPixel(0, row, column) / static_cast<double>(most)
                                         : (codes.OfPixel(0, row, column) - 16 * step) / (219.0 * step);
              const double red =
                  luma + 2 * (1 - weights.red) * (codes.OfPixel(2, row, column) - 128 * step) / chroma;
              const double blue =
                  luma + 2 * (1 - weights.blue) * (codes.OfPixel(1, row, column) - 128 * step) / chroma;
              const double green =
                  (luma - weights.red * red - weights.blue * blue) / (1 - weights.red - weights.blue);
              const Pixel& pixel = image.Row<Pixel>(row)[static_cast<std::size_t>(column)];
              const auto off = [](auto sample, double due) {
                return std::abs(ConvertSample<ToOne, WayOf<Pixel>>(sample) - due);
              };
              worst = std::max({worst, off(pixel.red, red), off(pixel.green, green), off(pixel.blue, blue)});
            }
          }
        });
        EXPECT_LT(worst, (bits == 8 ? 1.0 : 0.1) / 255)
            << format << " matrix " << weights.matrix << " range " << range;
      }
    }
  }
}

}  // namespace
