#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "minihost/copy.h"
#include "tests/support/guarded_world.h"

namespace minihost {
namespace {

template <class P>
constexpr double kWhite = kDepthOf<P> == Depth::kBits8    ? 255
                          : kDepthOf<P> == Depth::kBits16 ? 32768
                                                          : 1;

// Transparent, opaque and faint pixels, and in float what lies beyond black and white.
template <class P>
P RandomPixel(std::mt19937& random) {
  using C = decltype(P::alpha);
  std::uniform_real_distribution<double> unit(0, 1);
  const bool beyond = kDepthOf<P> == Depth::kFloat && random() % 8 == 0;
  const auto channel = [&] {
    const double value = unit(random) * (beyond ? 4 : 1) - (beyond ? 1 : 0);
    return static_cast<C>(std::is_floating_point_v<C> ? value : std::round(value * kWhite<P>));
  };
  P pixel{channel(), channel(), channel(), channel()};
  if (random() % 3 == 0) pixel.alpha = 0;
  if (random() % 3 == 0) pixel.alpha = static_cast<C>(kWhite<P>);
  return pixel;
}

// The average by its definition: every source pixel against every target pixel, in long double.
template <class P>
struct Mean {
  long double area = 0, alpha = 0, weight = 0, red = 0, green = 0, blue = 0;

  void Add(const P& pixel, long double covered) {
    const long double a = pixel.alpha, w = std::max(a, 0.0L) * covered;
    area += covered;
    alpha += covered * a;
    weight += w;
    red += w * pixel.red;
    green += w * pixel.green;
    blue += w * pixel.blue;
  }
};

long double Covered(long double begin, long double end, int pixel) {
  return std::max(0.0L, std::min(end, pixel + 1.0L) - std::max(begin, static_cast<long double>(pixel)));
}

template <class P>
Mean<P> MeanUnder(GuardedWorld<P>& src, const PF_LRect& from, const PF_LRect& to, int column, int row) {
  const auto scale = [](int target, int toBegin, int toEnd, int fromBegin, int fromEnd) {
    return fromBegin +
           (target - toBegin) * (static_cast<long double>(fromEnd) - fromBegin) / (toEnd - toBegin);
  };
  const long double left = scale(column, to.left, to.right, from.left, from.right);
  const long double right = scale(column + 1, to.left, to.right, from.left, from.right);
  const long double top = scale(row, to.top, to.bottom, from.top, from.bottom);
  const long double bottom = scale(row + 1, to.top, to.bottom, from.top, from.bottom);
  Mean<P> mean;
  for (int y = 0; y < src.World()->height; ++y)
    for (int x = 0; x < src.World()->width; ++x) {
      const long double covered = Covered(left, right, x) * Covered(top, bottom, y);
      if (covered > 1e-12L) mean.Add(src.At(x, y), covered);
    }
  return mean;
}

template <class C>
void ExpectNear(C got, long double want, const char* what) {
  if constexpr (std::is_floating_point_v<C>) {
    EXPECT_NEAR(got, static_cast<double>(want), 1e-6 * std::max(1.0, std::abs(static_cast<double>(want))))
        << what;
  } else {
    // The nearest whole number; where the exact mean lies half-way, either neighbour in long double's eyes.
    EXPECT_LE(std::abs(static_cast<long double>(got) - want), 0.5L + 1e-9L) << what;
  }
}

template <class P>
class ReduceTest : public testing::Test {};
using Pixels = testing::Types<PF_Pixel, PF_Pixel16, PF_PixelFloat>;
TYPED_TEST_SUITE(ReduceTest, Pixels);

TYPED_TEST(ReduceTest, EveryTargetPixelIsTheMeanOfTheAreaUnderIt) {
  using P = TypeParam;
  const struct {
    int width, height;
    PF_LRect from;
    int targetWidth, targetHeight;
    PF_LRect to;
  } cases[] = {
      {40, 30, {0, 0, 40, 30}, 4, 3, {0, 0, 4, 3}},           // whole factors
      {37, 23, {0, 0, 37, 23}, 5, 4, {0, 0, 5, 4}},           // fractions on both axes
      {15, 8, {0, 0, 15, 8}, 2, 2, {0, 0, 2, 2}},             //
      {3, 2, {0, 0, 3, 2}, 7, 9, {0, 0, 7, 9}},               // enlarging
      {20, 3, {0, 0, 20, 3}, 6, 8, {0, 0, 6, 8}},             // reducing one axis, enlarging the other
      {1, 1, {0, 0, 1, 1}, 3, 2, {0, 0, 3, 2}},               //
      {17, 1, {0, 0, 17, 1}, 16, 1, {0, 0, 16, 1}},           //
      {20, 16, {3, 2, 17, 13}, 9, 9, {2, 1, 7, 5}},           // parts
      {20, 16, {-5, -3, 22, 18}, 9, 9, {-1, -2, 12, 10}},     // beyond both images
      {20, 16, {30, 0, 60, 16}, 9, 9, {0, 0, 9, 9}},          // outside of the source
      {20, 16, {0, 0, 20, 16}, 9, 9, {-2000, -3000, 70, 9}},  // a sliver of a huge target
  };
  std::mt19937 random(2024);
  for (std::size_t n = 0; n < std::size(cases); ++n) {
    SCOPED_TRACE(n);
    const auto& c = cases[n];
    GuardedWorld<P> src(c.width, c.height), dst(c.targetWidth, c.targetHeight);
    for (int row = 0; row < c.height; ++row)
      for (int column = 0; column < c.width; ++column) src.At(column, row) = RandomPixel<P>(random);
    const P before{7, 8, 9, 10};
    dst.Fill(before);
    CopyPixels(*src.World(), c.from, *dst.World(), c.to, kDepthOf<P>);
    for (int row = 0; row < c.targetHeight; ++row) {
      for (int column = 0; column < c.targetWidth; ++column) {
        SCOPED_TRACE(testing::Message() << column << ", " << row);
        const bool inside =
            column >= c.to.left && column < c.to.right && row >= c.to.top && row < c.to.bottom;
        const Mean<P> mean = MeanUnder<P>(src, c.from, c.to, column, row);
        const P& got = dst.At(column, row);
        if (!inside || mean.area == 0) {
          EXPECT_EQ(got.alpha, before.alpha);
          EXPECT_EQ(got.blue, before.blue);
          continue;
        }
        ExpectNear(got.alpha, mean.alpha / mean.area, "alpha");
        ExpectNear(got.red, mean.weight > 0 ? mean.red / mean.weight : 0, "red");
        ExpectNear(got.green, mean.weight > 0 ? mean.green / mean.weight : 0, "green");
        ExpectNear(got.blue, mean.weight > 0 ? mean.blue / mean.weight : 0, "blue");
      }
    }
    EXPECT_TRUE(src.GuardsIntact() && dst.GuardsIntact());
  }
}

TYPED_TEST(ReduceTest, AnEvenPictureStaysEvenAndHiddenColoursStayHidden) {
  using P = TypeParam;
  using C = decltype(P::alpha);
  const C white = static_cast<C>(kWhite<P>), third = static_cast<C>(kWhite<P> / 3);
  Image even(101, 67, kDepthOf<P>, Clearing::kNone);
  for (int row = 0; row < even.height(); ++row)
    std::ranges::fill(even.Row<P>(row), P{white, third, 0, white});
  const Image small = Resized(even, 10, 6);
  for (int row = 0; row < small.height(); ++row)
    for (const P& pixel : small.Row<P>(row)) {
      EXPECT_EQ(pixel.alpha, white);
      EXPECT_EQ(pixel.red, third);
      EXPECT_EQ(pixel.blue, white);
    }

  Image hiding(2, 1, kDepthOf<P>);
  hiding.Row<P>(0)[0] = {0, white, white, white};  // transparent white beside opaque red
  hiding.Row<P>(0)[1] = {white, white, 0, 0};
  const P mixed = Resized(hiding, 1, 1).template Row<P>(0)[0];
  EXPECT_EQ(mixed.red, white);
  EXPECT_EQ(mixed.green, 0);
}

}  // namespace
}  // namespace minihost
