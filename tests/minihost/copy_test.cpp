#include "minihost/copy.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "tests/support/guarded_world.h"

namespace minihost {
namespace {

template <class P>
class CopyTest : public testing::Test {};
using Pixels = testing::Types<PF_Pixel, PF_Pixel16, PF_PixelFloat>;
TYPED_TEST_SUITE(CopyTest, Pixels);

template <class P>
P Numbered(int column, int row) {
  using C = decltype(P::alpha);
  return {C(column + 1), C(row + 1), C(column * 7 + row), C(200 - column)};
}

template <class P>
bool Same(const P& a, const P& b) {
  return a.alpha == b.alpha && a.red == b.red && a.green == b.green && a.blue == b.blue;
}

constexpr int kHuge = std::numeric_limits<std::int32_t>::max();

TYPED_TEST(CopyTest, EqualRectanglesMoveExactlyThePixelsThatExistOnBothSides) {
  using P = TypeParam;
  const struct {
    PF_LRect from, to;
  } cases[] = {
      {{0, 0, 7, 5}, {0, 0, 7, 5}},
      {{0, 0, 7, 5}, {1, 1, 8, 6}},
      {{2, 1, 5, 4}, {6, 3, 9, 6}},
      {{-3, -2, 4, 3}, {0, 0, 7, 5}},
      {{3, 2, 10, 9}, {-2, -1, 5, 6}},
      {{0, 0, 7, 5}, {9, 0, 16, 5}},
      {{20, 20, 27, 25}, {0, 0, 7, 5}},
      {{4, 4, 4, 9}, {0, 0, 0, 5}},
      {{5, 4, 3, 2}, {5, 4, 3, 2}},
      {{0, 0, kHuge, kHuge}, {0, 0, kHuge, kHuge}},
      {{-kHuge, -kHuge, kHuge, kHuge}, {-kHuge, -kHuge, kHuge, kHuge}},
      {{-100, 0, 100, 5}, {-98, 2, 102, 7}},
  };
  for (std::size_t n = 0; n < std::size(cases); ++n) {
    SCOPED_TRACE(n);
    const auto& [from, to] = cases[n];
    GuardedWorld<P> src(7, 5), dst(9, 6);
    for (int row = 0; row < 5; ++row)
      for (int column = 0; column < 7; ++column) src.At(column, row) = Numbered<P>(column, row);
    CopyPixels(*src.World(), from, *dst.World(), to, kDepthOf<P>);
    for (int row = 0; row < 6; ++row) {
      for (int column = 0; column < 9; ++column) {
        const std::int64_t x = std::int64_t{column} - to.left + from.left;
        const std::int64_t y = std::int64_t{row} - to.top + from.top;
        const bool copied = column >= to.left && column < to.right && row >= to.top && row < to.bottom &&
                            x >= 0 && x < 7 && y >= 0 && y < 5;
        const P want = copied ? Numbered<P>(int(x), int(y)) : P{};
        ASSERT_TRUE(Same(dst.At(column, row), want)) << column << ", " << row;
      }
    }
    EXPECT_TRUE(src.GuardsIntact() && dst.GuardsIntact());
  }
}

TYPED_TEST(CopyTest, CopiesWithinOneWorldReadBeforeTheyWrite) {
  using P = TypeParam;
  for (const auto& [dx, dy] : {std::pair{1, 1}, {-1, -1}, {1, 0}, {-1, 0}, {2, -1}, {0, 2}}) {
    GuardedWorld<P> world(8, 8);
    for (int row = 0; row < 8; ++row)
      for (int column = 0; column < 8; ++column) world.At(column, row) = Numbered<P>(column, row);
    CopyPixels(*world.World(), {2, 2, 6, 6}, *world.World(), {2 + dx, 2 + dy, 6 + dx, 6 + dy}, kDepthOf<P>);
    for (int row = 2; row < 6; ++row)
      for (int column = 2; column < 6; ++column)
        ASSERT_TRUE(Same(world.At(column + dx, row + dy), Numbered<P>(column, row))) << dx << ", " << dy;
  }
}

TYPED_TEST(CopyTest, FillWidensTheColourAndStaysInside) {
  using P = TypeParam;
  const double white = kDepthOf<P> == Depth::kBits8 ? 255 : kDepthOf<P> == Depth::kBits16 ? 32768 : 1;
  GuardedWorld<P> world(5, 4);
  FillPixels({255, 0, 128, 1}, {-4, 1, 3, 900}, *world.World(), kDepthOf<P>);
  for (int row = 0; row < 4; ++row) {
    for (int column = 0; column < 5; ++column) {
      const P& pixel = world.At(column, row);
      if (column >= 3 || row < 1) {
        EXPECT_TRUE(Same(pixel, P{}));
        continue;
      }
      EXPECT_EQ(pixel.alpha, white);
      EXPECT_EQ(pixel.red, 0);
      const double tolerance = std::is_floating_point_v<decltype(pixel.alpha)> ? 1e-7 : 0.5;
      EXPECT_NEAR(pixel.green, white * 128 / 255, tolerance);
      EXPECT_NEAR(pixel.blue, white / 255, tolerance);
    }
  }
  EXPECT_TRUE(world.GuardsIntact());
}

TEST(ImageTest, OwnsPaddedRowsAndNamesItsLimits) {
  Image image(3, 2, Depth::kBits16);
  image.Row<PF_Pixel16>(1)[2] = {1, 2, 3, 4};
  const PF_LayerDef world = image.World();
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(world.data) % 64, 0u);
  EXPECT_EQ(world.rowbytes, 64);
  EXPECT_EQ(world.world_flags, PF_WorldFlag_DEEP);
  EXPECT_EQ(world.extent_hint.right, 3);
  EXPECT_EQ(world.extent_hint.bottom, 2);

  const Image copy = image.Clone();
  const Image moved = std::move(image);
  EXPECT_TRUE(image.empty());  // NOLINT(bugprone-use-after-move): what a move leaves is promised
  EXPECT_EQ(image.World().data, nullptr);
  EXPECT_EQ(moved.World().data, world.data);
  EXPECT_NE(copy.data(), moved.data());
  EXPECT_TRUE(Same(copy.Row<PF_Pixel16>(1)[2], PF_Pixel16{1, 2, 3, 4}));
  EXPECT_TRUE(Same(copy.Row<PF_Pixel16>(0)[0], PF_Pixel16{}));

  for (const auto& [width, height] : {std::pair{0, 1}, {1, 0}, {32768, 1}, {1, -5}}) {
    try {
      Image(width, height, Depth::kBits8);
      ADD_FAILURE() << width << " x " << height;
    } catch (const std::invalid_argument& error) {
      const std::string text = error.what();
      EXPECT_NE(text.find(std::to_string(width == 1 ? height : width)), std::string::npos) << text;
      EXPECT_NE(text.find("1..32767"), std::string::npos) << text;
    }
  }
}

}  // namespace
}  // namespace minihost
