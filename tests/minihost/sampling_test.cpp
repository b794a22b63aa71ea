#include "minihost/sampling.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "minihost/image.h"
#include "tests/support/guarded_world.h"

namespace minihost {
namespace {

constexpr PF_Fixed kOne = 65536;

template <class P>
class SamplingTest : public testing::Test {};
using Pixels = testing::Types<PF_Pixel, PF_Pixel16, PF_PixelFloat>;
TYPED_TEST_SUITE(SamplingTest, Pixels);

template <class P>
void Scatter(GuardedWorld<P>& world, std::mt19937& random) {
  using C = decltype(P::alpha);
  const double white = kDepthOf<P> == Depth::kBits8 ? 255 : kDepthOf<P> == Depth::kBits16 ? 32768 : 1;
  std::uniform_real_distribution<double> unit(0, 1);
  for (int row = 0; row < world.World()->height; ++row)
    for (int column = 0; column < world.World()->width; ++column) {
      const auto channel = [&] { return static_cast<C>(unit(random) * white + 0.25 * (white > 1)); };
      // Runs of equal alphas, so that both roads are walked.
      const C alphas[] = {0, static_cast<C>(white), channel()};
      world.At(column, row) = {alphas[(column / 2 + row / 2) % 3], channel(), channel(), channel()};
    }
}

// The bilinear formula as it is written down, in long double.
template <class P>
struct Plain {
  long double alpha, red, green, blue;

  Plain(GuardedWorld<P>& world, PF_Fixed x, PF_Fixed y) {
    const auto place = [](PF_Fixed position, int size) {
      return std::clamp(position / 65536.0L, 0.0L, size - 1.0L);
    };
    const long double u = place(x, world.World()->width), v = place(y, world.World()->height);
    long double sum[4] = {}, plain[4] = {};
    bool oneAlpha = true;
    const int column = int(u), row = int(v);
    const P& corner = world.At(column, row);
    for (int dy = 0; dy < 2; ++dy)
      for (int dx = 0; dx < 2; ++dx) {
        const long double w = (1 - std::abs(u - (column + dx))) * (1 - std::abs(v - (row + dy)));
        if (w <= 0) continue;
        const P& pixel = world.At(column + dx, row + dy);
        oneAlpha = oneAlpha && pixel.alpha == corner.alpha;
        using Wide = long double;
        const Wide channels[] = {Wide(pixel.alpha), Wide(pixel.red), Wide(pixel.green), Wide(pixel.blue)};
        for (int i = 0; i < 4; ++i) {
          plain[i] += w * channels[i];
          sum[i] += w * pixel.alpha * (i == 0 ? 1 : channels[i]);
        }
      }
    const bool weighted = !oneAlpha && sum[0] > 0;
    const auto color = [&](int i) { return weighted ? sum[i] / sum[0] : plain[i]; };
    alpha = plain[0];
    red = color(1);
    green = color(2);
    blue = color(3);
  }
};

TYPED_TEST(SamplingTest, FollowsThePlainFormulaEverywhere) {
  using P = TypeParam;
  const double tolerance = kDepthOf<P> == Depth::kFloat ? 1e-6 : 0.5 + 1e-9;
  std::mt19937 random(7);
  for (const auto& [width, height] : {std::pair{9, 7}, {1, 5}, {6, 1}, {1, 1}, {2, 2}}) {
    GuardedWorld<P> world(width, height);
    Scatter(world, random);
    std::uniform_int_distribution<PF_Fixed> xs(-2 * kOne, (width + 1) * kOne),
        ys(-2 * kOne, (height + 1) * kOne);
    for (int i = 0; i < 2000; ++i) {
      const PF_Fixed x = i % 5 == 0 ? xs(random) / kOne * kOne : xs(random);
      const PF_Fixed y = i % 7 == 0 ? ys(random) / kOne * kOne : ys(random);
      const P got = SampleBilinear<P>(*world.World(), x, y);
      const Plain<P> want(world, x, y);
      ASSERT_NEAR(got.alpha, double(want.alpha), tolerance) << x << ", " << y;
      ASSERT_NEAR(got.red, double(want.red), tolerance) << x << ", " << y;
      ASSERT_NEAR(got.green, double(want.green), tolerance) << x << ", " << y;
      ASSERT_NEAR(got.blue, double(want.blue), tolerance) << x << ", " << y;
    }
  }
}

TYPED_TEST(SamplingTest, WholePositionsAndBordersAreExact) {
  using P = TypeParam;
  std::mt19937 random(8);
  GuardedWorld<P> world(5, 4);
  Scatter(world, random);
  constexpr PF_Fixed kLow = std::numeric_limits<PF_Fixed>::min(),
                     kHigh = std::numeric_limits<PF_Fixed>::max();
  const auto expectPixel = [&](const P& got, int column, int row) {
    const P& want = world.At(column, row);
    EXPECT_TRUE(got.alpha == want.alpha && got.red == want.red && got.green == want.green &&
                got.blue == want.blue)
        << column << ", " << row;
  };
  for (int row = 0; row < 4; ++row)
    for (int column = 0; column < 5; ++column) {
      expectPixel(SampleBilinear<P>(*world.World(), column * kOne, row * kOne), column, row);
      expectPixel(SampleNearest<P>(*world.World(), column * kOne + kOne / 2 - 1, row * kOne - kOne / 2),
                  column, row);
    }
  expectPixel(SampleBilinear<P>(*world.World(), kLow, kHigh), 0, 3);
  expectPixel(SampleBilinear<P>(*world.World(), kHigh, kLow), 4, 0);
  expectPixel(SampleNearest<P>(*world.World(), kHigh, kHigh), 4, 3);
  expectPixel(SampleNearest<P>(*world.World(), kLow, kLow), 0, 0);
}

TEST(SamplingReachTest, PixelsBeyondTheLastAreNotRead) {
  constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
  GuardedWorld<PF_PixelFloat> world(4, 4);
  world.Fill({kNan, kNan, kNan, kNan});
  for (int row = 0; row < 3; ++row)
    for (int column = 0; column < 3; ++column) world.At(column, row) = {1, 0.5f, 0.5f, 0.5f};
  world.World()->width = world.World()->height = 3;
  for (const auto& [x, y] : {std::pair{kOne / 2, 2 * kOne}, {2 * kOne, kOne / 2}, {9 * kOne, kOne / 3}}) {
    EXPECT_EQ(SampleBilinear<PF_PixelFloat>(*world.World(), x, y).red, 0.5f) << x << ", " << y;
  }
}

}  // namespace
}  // namespace minihost
