#include "effect/render/scale.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <random>

namespace {

FX_PARc Scale(PF_RationalScale downsampleX, PF_RationalScale downsampleY, PF_RationalScale aspect) {
  PF_InData inData{};
  inData.downsample_x = downsampleX;
  inData.downsample_y = downsampleY;
  inData.pixel_aspect_ratio = aspect;
  return FX_PARc(&inData);
}

std::array<double, 8> Doubles(const FX_PARc& s) {
  return {s.meanScaleInv, s.aspectInv, s.xScaleInv,   s.yScaleInv,
          s.xScale,       s.yScale,    s.xScaleFixed, s.yScaleFixed};
}

std::array<float, 8> Floats(const FX_PARc& s) {
  return {s.meanScaleInvF, s.aspectInvF, s.xScaleInvF,   s.yScaleInvF,
          s.xScaleF,       s.yScaleF,    s.xScaleFixedF, s.yScaleFixedF};
}

TEST(Scale, WorkedValues) {
  const double kLeast = 1 / 4294967295.0;
  const struct {
    PF_RationalScale x, y, aspect;
    std::array<double, 8> want;
  } cases[] = {
      {{1, 1}, {1, 1}, {1, 1}, {1, 1, 1, 1, 1, 1, 65536, 65536}},
      {{1, 2}, {1, 2}, {1, 1}, {2, 1, 2, 2, 0.5, 0.5, 32768, 32768}},
      {{1, 1}, {1, 1}, {2, 1}, {1.5, 0.5, 2, 1, 0.5, 1, 32768, 65536}},
      {{1, 1}, {1, 4}, {1, 2}, {2.25, 2, 0.5, 4, 2, 0.25, 131072, 16384}},
      {{-1, 4294967295u},
       {1, 1},
       {1, 1},
       {-2147483647, 1, 1 / -kLeast, 1, -kLeast, 1, kLeast * -65536, 65536}},
  };
  for (const auto& c : cases) EXPECT_EQ(Doubles(Scale(c.x, c.y, c.aspect)), c.want);
}

TEST(Scale, MultipliesBeforeDividingAndRoundsEachCopyOnItsOwn) {
  std::mt19937 random(11);
  const auto draw = [&] { return static_cast<std::int32_t>(random() % 2000 + 1); };
  const auto ratio = [&] { return PF_RationalScale{draw(), static_cast<std::uint32_t>(draw())}; };
  for (int i = 0; i < 20'000; ++i) {
    const PF_RationalScale x = ratio(), y = ratio(), aspect = ratio();
    const FX_PARc s = Scale(x, y, aspect);
    const double aspectInv = static_cast<double>(aspect.den) / aspect.num;
    const double xScale = (aspectInv * x.num) / x.den, yScale = y.num / static_cast<double>(y.den);
    const double xInv = 1.0 / xScale, yInv = 1.0 / yScale;
    ASSERT_EQ(Doubles(s), (std::array{(xInv + yInv) * 0.5, aspectInv, xInv, yInv, xScale, yScale,
                                      xScale * 65536, yScale * 65536}))
        << i;
    for (std::size_t k = 0; k < 8; ++k) ASSERT_EQ(Floats(s)[k], static_cast<float>(Doubles(s)[k])) << i;
  }
}

TEST(Scale, CarriesWhatAZeroGives) {
  const FX_PARc none = Scale({0, 1}, {1, 0}, {1, 1});
  EXPECT_EQ(none.xScale, 0.0);
  EXPECT_TRUE(std::isinf(none.xScaleInvF) && std::isinf(none.yScaleF));
  EXPECT_EQ(none.yScaleInvF, 0.0f);
  EXPECT_TRUE(std::isnan(Scale({0, 1}, {1, 1}, {0, 1}).xScaleF));
}

}  // namespace
