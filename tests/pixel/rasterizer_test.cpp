#include "effect/pixel/rasterizer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <ostream>
#include <random>
#include <utility>
#include <vector>

#include "effect/pixel/pixel_type.h"
#include "tests/support/guarded_world.h"

namespace {

template <class T>
constexpr T kColour = {PixelType<T>::kWhite, 1, 2, 3};

/// The calls of the operator: which pixel, and the alpha laid on it.
using Visits = std::vector<std::pair<const void*, float>>;
Visits visits;

/// Notes the call and marks the pixel.
template <class T>
void Record(const T* top, const T* bottom, T& result) {
  EXPECT_TRUE(bottom == &result && top->red == 1 && top->green == 2 && top->blue == 3);
  visits.push_back({bottom, static_cast<float>(top->alpha)});
  result = {0, 9, 9, 9};
}

struct Flake {
  float size;
  FloatPoint p0, p1;
};

std::ostream& operator<<(std::ostream& out, const Flake& f) {
  return out << std::hexfloat << "size " << f.size << " from (" << f.p0.x << ", " << f.p0.y << ") to ("
             << f.p1.x << ", " << f.p1.y << ")";
}

PF_InData InData(PF_RationalScale x = {1, 1}, PF_RationalScale y = {1, 1}, PF_RationalScale aspect = {1, 1}) {
  static PF_UtilCallbacks utils = [] {
    PF_UtilCallbacks callbacks{};
    callbacks.ansi.sqrt = [](double value) { return std::sqrt(value); };
    return callbacks;
  }();
  PF_InData inData{};
  inData.utils = &utils;
  inData.downsample_x = x;
  inData.downsample_y = y;
  inData.pixel_aspect_ratio = aspect;
  return inData;
}

/// What the flake visits, in order; checks that no other byte of the picture changes.
template <class T>
const Visits& Draw(const PF_InData& inData, const Flake& flake, GuardedWorld<T>& image,
                   T colour = kColour<T>) {
  const FX_PARc scale(&inData);
  image.Fill(T{});
  visits.clear();
  DrawDroppyMB<T>(&inData, &scale, flake.size, flake.p0, flake.p1, colour, image.World(), Record<T>);
  EXPECT_TRUE(image.GuardsIntact()) << flake;
  std::size_t marked = 0;
  for (std::int32_t i = 0; i < image.World()->height * image.World()->width; ++i)
    marked += image.At(i % image.World()->width, i / image.World()->width).red == 9;
  EXPECT_EQ(marked, visits.size()) << flake;
  return visits;
}

// The rules one rounded step at a time, every pixel on its own.
template <class T>
Visits Plain(const FX_PARc& scale, Flake f, GuardedWorld<T>& image, T colour) {
  float opacity = colour.alpha;
  if (f.size < 1.0f) {
    opacity = opacity * f.size;
    f.size = 1.0f;
  }
  const float dx = f.p1.x - f.p0.x;
  float dy = f.p1.y - f.p0.y;
  if (dy > -0.1f && dy < 0.1f) {
    dy = 0.1f;
    f.p1.y = f.p0.y + 0.1f;
  }
  const float across2 = dx * dx + dy * dy;
  const float length = static_cast<float>(std::sqrt(static_cast<double>(across2)));
  const float g = 1.0f / (length * f.size), nx = -dy * g, ny = dx * g, end = length / f.size;
  const float acrossConstant = -(f.p1.x * nx + f.p1.y * ny), alongConstant = f.p1.x * ny - f.p1.y * nx;
  const auto bounds = [&](float a, float b, float factor, std::int32_t count) {
    const auto truncate = [](float value) { return static_cast<std::int64_t>(value); };
    const std::int64_t reach = truncate(f.size * factor) + 1, last = count - 1;
    return std::pair{std::clamp<std::int64_t>(truncate(std::min(a * factor, b * factor)) - reach, 0, last),
                     std::clamp<std::int64_t>(truncate(std::max(a * factor, b * factor)) + reach, 0, last)};
  };
  const auto [left, right] = bounds(f.p0.x, f.p1.x, scale.xScaleF, image.World()->width);
  const auto [top, bottom] = bounds(f.p0.y, f.p1.y, scale.yScaleF, image.World()->height);
  Visits result;
  for (auto row = static_cast<std::int32_t>(top); row <= bottom; ++row) {
    for (auto column = static_cast<std::int32_t>(left); column <= right; ++column) {
      const float x = static_cast<float>(column) * scale.xScaleInvF;
      const float y = static_cast<float>(row) * scale.yScaleInvF;
      const float across = nx * x + (ny * y + acrossConstant);
      const float along = (nx * y + alongConstant) - ny * x;
      float q = across * across;
      if (q >= 1.0f) continue;
      if (along < 0.0f) q = q + along * along;
      if (along > end) q = q + (along - end) * (along - end);
      if (q >= 1.0f) continue;
      const float alpha = (1.0f - q) * opacity;
      result.push_back({&image.At(column, row), PixelType<T>::kWhite == 1 ? alpha : std::trunc(alpha)});
    }
  }
  return result;
}

/// The squared distance, in radii, from a pixel to the path.
double SquaredDistance(const Flake& f, double x, double y) {
  const float fall = f.p1.y - f.p0.y;
  const double endY = fall > -0.1f && fall < 0.1f ? f.p0.y + 0.1f : f.p1.y;
  const double dx = double{f.p1.x} - f.p0.x, dy = endY - f.p0.y;
  const double t = std::clamp(((x - f.p0.x) * dx + (y - f.p0.y) * dy) / (dx * dx + dy * dy), 0.0, 1.0);
  return std::pow(std::hypot(x - (f.p0.x + t * dx), y - (f.p0.y + t * dy)) / std::max(1.0f, f.size), 2);
}

constexpr std::uint32_t kSeed = 4711;

struct RandomFlakes {
  std::mt19937 random{kSeed};

  std::size_t Below(std::uint32_t count) { return random() % count; }

  PF_InData Scales() {
    static constexpr PF_RationalScale kRatios[] = {{1, 1}, {1, 1}, {1, 2}, {1, 3}, {2, 3}, {10, 11}, {2, 1}};
    return InData(kRatios[Below(7)], kRatios[Below(7)], kRatios[Below(7)]);
  }

  /// A flake on or near the image, off it on every side.  Some lie on half units, stand still, move level,
  /// rise or fall by about the least fall, or come from afar.
  template <class T>
  Flake Next(const FX_PARc& scale, GuardedWorld<T>& image) {
    const bool grid = Below(4) == 0;
    const auto real = [&](float low, float high) {
      const float value = low + (high - low) * static_cast<float>(random() >> 8) * 0x1p-24f;
      return grid ? std::round(value * 2.0f) / 2.0f : value;
    };
    const float sizes[] = {real(0, 1), real(1, 2), real(1, 9), real(8, 50), 0.0f, 1.0f, 0x1.fffffep-1f};
    const float width = static_cast<float>(image.World()->width) * scale.xScaleInvF;
    const float height = static_cast<float>(image.World()->height) * scale.yScaleInvF;
    Flake f{sizes[Below(7)], {real(-20, width + 20), real(-20, height + 20)}, {}};
    const float moves[] = {0.0f, 0.05f, 0.1f, real(-1, 1), real(-60, 60), real(-9, 9)};
    f.p1 = {f.p0.x + moves[Below(6)], f.p0.y + moves[Below(6)]};
    if (Below(8) == 0) f.p0.y = 0.1f, f.p1.y = 0.0f;
    if (Below(8) == 0) f.p0.y = real(-0.1f, 0), f.p1.y = std::nextafter(f.p0.y + 0.1f, 1.0f);
    if (Below(16) == 0) f.p1 = {real(-3e6f, 3e6f), real(-3e6f, 3e6f)};
    return f;
  }
};

template <class T>
class Rasterizer : public testing::Test {};
using PixelTypes = testing::Types<PF_Pixel, PF_Pixel16, PF_PixelFloat>;
TYPED_TEST_SUITE(Rasterizer, PixelTypes);

TYPED_TEST(Rasterizer, VisitsThePlainPixelsInOrderWithThePlainAlphas) {
  RandomFlakes random;
  constexpr std::int32_t kSizes[][2] = {{1, 1}, {7, 5}, {33, 21}, {1, 40}, {61, 1}};
  std::size_t visited = 0;
  for (const auto& [width, height] : kSizes) {
    GuardedWorld<TypeParam> image(width, height);
    for (int i = 0; i < 4000; ++i) {
      const PF_InData inData = random.Scales();
      const FX_PARc scale(&inData);
      const Flake flake = random.Next(scale, image);
      TypeParam colour = kColour<TypeParam>;
      if (i % 3 == 0) colour.alpha = static_cast<decltype(colour.alpha)>(colour.alpha * 0.37f);
      ASSERT_EQ(Draw(inData, flake, image, colour), Plain(scale, flake, image, colour))
          << flake << ", seed " << kSeed << ", " << width << " x " << height << ", flake " << i;
      visited += visits.size();
    }
  }
  EXPECT_GT(visited, 100'000u);
}

TYPED_TEST(Rasterizer, CoversExactlyTheCapsule) {
  RandomFlakes random;
  constexpr float kWhite = PixelType<TypeParam>::kWhite;
  constexpr double kTolerance = 5e-4;  // of single precision, in the square
  GuardedWorld<TypeParam> image(33, 21);
  for (int i = 0; i < 3000; ++i) {
    const PF_InData inData = random.Scales();
    const FX_PARc scale(&inData);
    const Flake flake = random.Next(scale, image);
    if (std::abs(flake.p1.x) + std::abs(flake.p1.y) > 1000) continue;
    Draw(inData, flake, image);
    auto next = visits.begin();
    for (std::int32_t row = 0; row < 21; ++row)
      for (std::int32_t column = 0; column < 33; ++column) {
        const double q = SquaredDistance(flake, column / scale.xScale, row / scale.yScale);
        const bool covered = next != visits.end() && next->first == &image.At(column, row);
        ASSERT_TRUE(covered == (q < 1.0) || std::abs(q - 1.0) <= kTolerance) << flake << ", flake " << i;
        if (!covered) continue;
        const double alpha = (1.0 - q) * std::min(1.0f, flake.size) * kWhite;
        ASSERT_NEAR(next->second, alpha, kTolerance * kWhite + (kWhite > 1 ? 1 : 0)) << flake;
        ++next;
      }
  }
}

TYPED_TEST(Rasterizer, DrawsNothingOfWhatHasNoPlaceOnThePicture) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  const Flake still{4, {10, 10}, {10, 10}};
  GuardedWorld<TypeParam> image(21, 17);
  ASSERT_FALSE(Draw(InData(), still, image).empty());

  for (const float bad : {kInfinity, -kInfinity, kNaN, 3e9f, -3e9f, 1e20f, -1e20f, 3.4e38f, -3.4e38f}) {
    Flake flakes[] = {still, still, still, still, still, still};
    flakes[0].size = bad;
    flakes[1].p0.x = bad;
    flakes[2].p0.y = bad;
    flakes[3].p1.x = bad;
    flakes[4].p1.y = bad;
    flakes[5].p0 = flakes[5].p1 = {bad, bad};
    for (const Flake& flake : flakes) EXPECT_TRUE(Draw(InData(), flake, image).empty()) << flake;
  }
  for (const float size : {-0.5f, -4.0f, -1e-30f, -2e9f})
    EXPECT_TRUE(Draw(InData(), {size, {10, 10}, {10, 12}}, image).empty()) << size;

  const PF_RationalScale one{1, 1};
  for (const PF_RationalScale zero : {PF_RationalScale{0, 1}, PF_RationalScale{1, 0}, PF_RationalScale{0, 0}})
    for (const Flake& flake : {still, Flake{4, {0, 0}, {0, 0}}, Flake{4, {0, 0}, {9, 9}}})
      for (const PF_InData& inData : {InData(zero, one, one), InData(one, zero, one), InData(one, one, zero),
                                      InData(zero, zero, one), InData(zero, one, zero)})
        EXPECT_TRUE(Draw(inData, flake, image).empty()) << flake;

  for (const auto& [width, height] : {std::pair{0, 0}, {0, 5}, {5, 0}}) {
    GuardedWorld<TypeParam> empty(width, height);
    EXPECT_TRUE(Draw(InData(), {4, {0, 0}, {1, 1}}, empty).empty());
  }
}

TYPED_TEST(Rasterizer, StaysOnThePictureAtTheEdgeOfTheNumbers) {
  std::mt19937 random(99);
  const float values[] = {0.0f,   -1e-45f, 1e-38f,         5.0f,     1e6f,    -1e9f,
                          2.1e9f, -2.1e9f, 0x1.fffffep30f, -0x1p31f, 1.3e19f, -3e28f};
  const auto draw = [&] { return values[random() % std::size(values)]; };
  GuardedWorld<TypeParam> image(9, 7);
  const PF_InData scales[] = {InData(), InData({1, 4294967295u}, {1, 4294967295u}),
                              InData({1, 4294967295u}, {1, 1}, {2147483647, 1}),
                              InData({2147483647, 1}, {-1, 1}, {1, 4294967295u}), InData({-1, 2}, {-1, 2})};
  for (int i = 0; i < 20'000; ++i)
    Draw(scales[random() % std::size(scales)], {draw(), {draw(), draw()}, {draw(), draw()}}, image);
}

}  // namespace
