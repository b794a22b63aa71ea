#include "effect/pixel/rasterizer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <utility>
#include <vector>

#include "effect/pixel/pixel_type.h"
#include "tests/support/guarded_world.h"

namespace {

/// The calls of the operator: which pixel, and the alpha laid on it.
using Visits = std::vector<std::pair<const void*, float>>;
Visits visits;

template <class T>
void Record(const T* top, const T* bottom, T& result) {
  EXPECT_TRUE(bottom == &result && top->red == 1 && top->green == 2 && top->blue == 3);
  visits.push_back({bottom, static_cast<float>(top->alpha)});
  result.alpha = 0;
}

/// Its size and its path: x and y at the start, x and y at the end.
using Flake = std::array<float, 5>;

PF_InData InData(PF_RationalScale x = {1, 1}, PF_RationalScale y = {1, 1}, PF_RationalScale aspect = {1, 1}) {
  static PF_UtilCallbacks utils{};
  utils.ansi.sqrt = [](double value) { return std::sqrt(value); };
  PF_InData inData{};
  inData.utils = &utils;
  inData.downsample_x = x;
  inData.downsample_y = y;
  inData.pixel_aspect_ratio = aspect;
  return inData;
}

/// What the flake visits, in order; checks that no byte beside the picture changes.
template <class T>
const Visits& Draw(const PF_InData& inData, const Flake& f, GuardedWorld<T>& image) {
  const FX_PARc scale(&inData);
  visits.clear();
  DrawDroppyMB<T>(&inData, &scale, f[0], {f[1], f[2]}, {f[3], f[4]}, {PixelType<T>::kWhite, 1, 2, 3},
                  image.World(), Record<T>);
  EXPECT_TRUE(image.GuardsIntact());
  return visits;
}

// The rules one rounded step at a time, every pixel on its own.
template <class T>
Visits Plain(const PF_InData& inData, const Flake& flake, GuardedWorld<T>& image) {
  const FX_PARc scale(&inData);
  auto [radius, x0, y0, x1, y1] = flake;
  const float size = std::max(radius, 1.0f), peak = PixelType<T>::kWhite * std::min(radius, 1.0f);
  float dx = x1 - x0, dy = y1 - y0;
  if (dy > -0.1f && dy < 0.1f) {
    dy = 0.1f;
    y1 = y0 + 0.1f;
  }
  const float length = static_cast<float>(std::sqrt(static_cast<double>(dx * dx + dy * dy)));
  const float g = 1.0f / (length * size), nx = -dy * g, ny = dx * g, end = length / size;
  const auto bounds = [&](float a, float b, float factor, int count) {
    const int reach = static_cast<int>(size * factor) + 1;
    return std::pair{std::clamp(static_cast<int>(std::min(a * factor, b * factor)) - reach, 0, count - 1),
                     std::clamp(static_cast<int>(std::max(a * factor, b * factor)) + reach, 0, count - 1)};
  };
  const auto [left, right] = bounds(x0, x1, scale.xScaleF, image.World()->width);
  const auto [top, bottom] = bounds(y0, y1, scale.yScaleF, image.World()->height);
  Visits result;
  for (int row = top; row <= bottom; ++row) {
    for (int column = left; column <= right; ++column) {
      const float x = static_cast<float>(column) * scale.xScaleInvF;
      const float y = static_cast<float>(row) * scale.yScaleInvF;
      const float across = nx * x + (ny * y - (x1 * nx + y1 * ny));
      const float along = (nx * y + (x1 * ny - y1 * nx)) - ny * x;
      const float beyond = along < 0.0f ? along : std::max(along - end, 0.0f);
      const float q = across * across + beyond * beyond, alpha = (1.0f - q) * peak;
      if (q < 1.0f) {
        result.push_back({&image.At(column, row), PixelType<T>::kWhite == 1 ? alpha : std::trunc(alpha)});
      }
    }
  }
  return result;
}

/// A flake on or near a picture, off it on every side.  Some lie on half units, stand still, move level,
/// rise by exactly the least fall, or come from afar.
Flake RandomFlake(std::mt19937& random) {
  const float step = random() % 4 == 0 ? 0.5f : 0x1p-10f;
  const auto real = [&](float low, float high) {
    return std::round((low + (high - low) * static_cast<float>(random()) * 0x1p-32f) / step) * step;
  };
  const float sizes[] = {real(0, 1), real(1, 2), real(1, 9), real(8, 50), 0.0f, 1.0f, 0x1.fffffep-1f};
  const float moves[] = {0.0f, 0.05f, 0.1f, real(-1, 1), real(-60, 60), real(-9, 9), real(-3e6f, 3e6f)};
  const float x = real(-20, 80), y = real(-20, 60);
  if (random() % 8 == 0) {
    return {sizes[random() % 7], x, 0.1f, x, 0.0f};
  }
  return {sizes[random() % 7], x, y, x + moves[random() % 7], y + moves[random() % 7]};
}

template <class T>
class Rasterizer : public testing::Test {};
using PixelTypes = testing::Types<PF_Pixel, PF_Pixel16, PF_PixelFloat>;
TYPED_TEST_SUITE(Rasterizer, PixelTypes);

TYPED_TEST(Rasterizer, VisitsThePlainPixelsInOrderWithThePlainAlphas) {
  constexpr PF_RationalScale kRatios[] = {{1, 1}, {1, 2}, {1, 3}, {2, 3}, {10, 11}, {2, 1}};
  std::mt19937 random(4711);
  const auto ratio = [&] { return kRatios[random() % 6]; };
  for (const auto& [width, height] : {std::pair{1, 1}, {7, 5}, {33, 21}, {1, 40}, {61, 1}}) {
    GuardedWorld<TypeParam> image(width, height);
    for (int i = 0; i < 5000; ++i) {
      const PF_InData inData = InData(ratio(), ratio(), ratio());
      const Flake flake = RandomFlake(random);
      ASSERT_EQ(Draw(inData, flake, image), Plain(inData, flake, image)) << testing::PrintToString(flake);
    }
  }
}

TYPED_TEST(Rasterizer, DrawsNothingOfWhatHasNoPlaceOnThePicture) {
  GuardedWorld<TypeParam> image(21, 17), empty(0, 5), flat(5, 0);
  const Flake still{4, 0, 0, 0, 0};
  for (const float bad : {INFINITY, -INFINITY, NAN, 2.1e9f, 3e9f, -3e9f, 1e20f, 3.4e38f, -3.4e38f}) {
    for (std::size_t i = 0; i < still.size(); ++i) {
      Flake flake = still;
      flake[i] = bad;
      EXPECT_TRUE(Draw(InData(), flake, image).empty()) << testing::PrintToString(flake);
    }
  }
  EXPECT_TRUE(Draw(InData(), {-0.5f, 10, 10, 10, 12}, image).empty());
  EXPECT_TRUE(Draw(InData(), still, empty).empty() && Draw(InData(), still, flat).empty());
  for (const PF_RationalScale zero :
       {PF_RationalScale{0, 1}, PF_RationalScale{1, 0}, PF_RationalScale{0, 0}}) {
    for (const PF_InData& inData : {InData(zero), InData({1, 1}, zero), InData({1, 1}, {1, 1}, zero)}) {
      EXPECT_TRUE(Draw(inData, still, image).empty() && Draw(inData, {4, 0, 0, 0, 9}, image).empty());
    }
  }
  EXPECT_TRUE(Draw(InData({1, 4294967295u}, {1, 1}, {2147483647, 1}), {4, 0, 0, 1e20f, 9}, image).empty());
}

TEST(Scale, MultipliesBeforeDividingAndRoundsEachCopyOnItsOwn) {
  std::mt19937 random(11);
  const auto draw = [&] { return static_cast<std::int32_t>(random() % 2000 + 1); };
  const auto ratio = [&] { return PF_RationalScale{draw(), static_cast<std::uint32_t>(draw())}; };
  for (int i = 0; i < 20'000; ++i) {
    const PF_RationalScale x = ratio(), y = ratio(), aspect = ratio();
    const PF_InData inData = InData(x, y, aspect);
    const FX_PARc s(&inData);
    const double aspectInv = static_cast<double>(aspect.den) / aspect.num;
    const double xScale = (aspectInv * x.num) / x.den, yScale = y.num / static_cast<double>(y.den);
    const double xInv = 1.0 / xScale, yInv = 1.0 / yScale, mean = (xInv + yInv) * 0.5;
    const double want[] = {mean, aspectInv, xInv, yInv, xScale, yScale, xScale * 65536, yScale * 65536};
    const double got[] = {s.meanScaleInv, s.aspectInv, s.xScaleInv,   s.yScaleInv,
                          s.xScale,       s.yScale,    s.xScaleFixed, s.yScaleFixed};
    const float rounded[] = {s.meanScaleInvF, s.aspectInvF, s.xScaleInvF,   s.yScaleInvF,
                             s.xScaleF,       s.yScaleF,    s.xScaleFixedF, s.yScaleFixedF};
    for (int k = 0; k < 8; ++k) {
      ASSERT_TRUE(got[k] == want[k] && rounded[k] == static_cast<float>(want[k]))
          << "draw " << i << ", " << k;
    }
  }
}

}  // namespace
