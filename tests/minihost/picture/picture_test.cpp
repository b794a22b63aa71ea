// Copies, fills and samples against means in long double over every pixel of the source.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <random>

#include "minihost/picture/copy.h"
#include "minihost/picture/sampling.h"
#include "tests/support/guarded_world.h"

namespace minihost {
namespace {

using Four = std::array<long double, 4>;

template <class P>
constexpr float kWhite = sizeof(P) == 16  ? 1
                         : sizeof(P) == 8 ? 32768
                                          : 255;

template <class P>
Four Channels(const P& pixel) {
  return {1.0L * pixel.alpha, 1.0L * pixel.red, 1.0L * pixel.green, 1.0L * pixel.blue};
}

/// The nearest value of the depth; half-way between two, either will do.
template <class P>
void ExpectNearest(const P& got, const Four& want) {
  const long double tolerance = kDepthOf<P> == Depth::kFloat ? 2e-6L : 0.5L + 1e-9L;
  for (std::size_t k = 0; k < 4; ++k) {
    EXPECT_LE(std::abs(Channels(got)[k] - want[k]), tolerance) << k;
  }
}

/// Channels from black to white, in float also beyond, and squares of transparent, opaque and faint pixels.
template <class P>
void Scatter(GuardedWorld<P>& world, std::mt19937& random) {
  using C = decltype(P::alpha);
  const float beyond = kDepthOf<P> == Depth::kFloat ? 0.2f : 0.0f;
  std::uniform_real_distribution<float> unit(-beyond, 1 + beyond);
  const auto channel = [&] { return static_cast<C>(unit(random) * kWhite<P>); };
  for (int row = 0; row < world.World()->height; ++row) {
    for (int column = 0; column < world.World()->width; ++column) {
      const C alphas[] = {0, static_cast<C>(kWhite<P>), channel()};
      world.At(column, row) = {alphas[(column / 2 + row / 2) % 3], channel(), channel(), channel()};
    }
  }
}

struct Means {
  Four plain, byAlpha;  // with colours as they are, and weighed by alphas above 0
  long double area, alphas;
};

template <class P, class Weight>
Means MeansOf(GuardedWorld<P>& world, Weight weight) {
  Means m{};
  for (int y = 0; y < world.World()->height; ++y) {
    for (int x = 0; x < world.World()->width; ++x) {
      const long double w = weight(x, y);
      if (w <= 1e-12L) {
        continue;
      }
      const Four pixel = Channels(world.At(x, y));
      const long double alpha = w * std::max(pixel[0], 0.0L);
      m.area += w;
      m.alphas += alpha;
      for (std::size_t k = 0; k < 4; ++k) {
        m.plain[k] += w * pixel[k];
        m.byAlpha[k] += alpha * pixel[k];
      }
    }
  }
  for (std::size_t k = 0; k < 4; ++k) {
    m.plain[k] /= m.area;
    m.byAlpha[k] = k == 0 ? m.plain[0] : m.alphas > 0 ? m.byAlpha[k] / m.alphas : 0;
  }
  return m;
}

/// How much of a source pixel lies under a target pixel along one axis.
long double Covered(int pixel, int target, double to, double toEnd, double from, double fromEnd) {
  const long double size = 1.0L * (fromEnd - from) / (toEnd - to), begin = from + (target - to) * size;
  return std::max(0.0L, std::min(begin + size, pixel + 1.0L) - std::max(begin, 1.0L * pixel));
}

template <class P>
class PictureTest : public testing::Test {};
using PixelTypes = testing::Types<PF_Pixel, PF_Pixel16, PF_PixelFloat>;
TYPED_TEST_SUITE(PictureTest, PixelTypes);

TYPED_TEST(PictureTest, CopiesTheMeanOfTheAreaUnderEachTargetPixel) {
  constexpr int kHuge = INT32_MAX;
  const std::tuple<bool, PF_LRect, PF_LRect> cases[] = {
      {true, {0, 0, 36, 22}, {0, 0, 9, 11}},          // whole factors
      {true, {0, 0, 37, 23}, {0, 0, 5, 4}},           // fractions on both axes
      {true, {0, 0, 20, 3}, {0, 0, 6, 8}},            // reducing one axis, enlarging the other
      {true, {3, 2, 17, 13}, {2, 1, 7, 5}},           // parts
      {true, {-5, -3, 52, 38}, {-1, -2, 12, 10}},     // beyond both images
      {true, {0, 0, 20, 16}, {-2000, -3000, 70, 9}},  // a sliver of a huge target
      {false, {-3, -2, 9, 6}, {1, 2, 13, 10}},
      {false, {30, 18, 42, 26}, {-2, -1, 10, 7}},
      {false, {-kHuge, -kHuge, kHuge, kHuge}, {-kHuge, -kHuge, kHuge, kHuge}},
  };
  std::mt19937 random(2024);
  for (const auto& [scaled, from, to] : cases) {
    GuardedWorld<TypeParam> src(37, 23), dst(12, 10);
    Scatter(src, random);
    const TypeParam before{7, 8, 9, 10};
    dst.Fill(before);
    CopyPixels(*src.World(), from, *dst.World(), to, kDepthOf<TypeParam>);
    EXPECT_TRUE(src.GuardsIntact() && dst.GuardsIntact());
    for (int row = 0; row < 10; ++row) {
      for (int column = 0; column < 12; ++column) {
        SCOPED_TRACE(testing::Message() << "from the left " << from.left << ": " << column << ", " << row);
        const Means under = MeansOf(src, [&, &from = from, &to = to](int x, int y) {
          return Covered(x, column, to.left, to.right, from.left, from.right) *
                 Covered(y, row, to.top, to.bottom, from.top, from.bottom);
        });
        const bool inside = column >= to.left && column < to.right && row >= to.top && row < to.bottom;
        const Four want = scaled ? under.byAlpha : under.plain;
        ExpectNearest(dst.At(column, row), inside && under.area > 0 ? want : Channels(before));
      }
    }
  }
}

TYPED_TEST(PictureTest, FillsAndCopiesWithinOneWorld) {
  constexpr Depth kDepth = kDepthOf<TypeParam>;
  for (const auto& [dx, dy] : {std::pair{1, 1}, {-1, -1}, {1, 0}, {-1, 0}, {0, 2}}) {
    GuardedWorld<TypeParam> world(8, 8);
    for (int i = 0; i < 64; ++i) {
      world.At(i % 8, i / 8).red = static_cast<decltype(TypeParam::red)>(i);
    }
    CopyPixels(*world.World(), {2, 2, 6, 6}, *world.World(), {2 + dx, 2 + dy, 6 + dx, 6 + dy}, kDepth);
    for (int i = 0; i < 16; ++i) {
      EXPECT_EQ(world.At(2 + i % 4 + dx, 2 + i / 4 + dy).red, 18 + i % 4 + i / 4 * 8) << dx << ", " << dy;
    }
    FillPixels({255, 0, 128, 1}, {-4, -1, 3, 900}, *world.World(), kDepth);
    EXPECT_TRUE(world.GuardsIntact());
    const long double white = kWhite<TypeParam>;
    ExpectNearest(world.At(2, 7), {white, 0, white * 128 / 255, white / 255});
    EXPECT_EQ(world.At(3, 0).alpha, 0) << "beside the rectangle";
  }
}

TYPED_TEST(PictureTest, SamplesByThePlainFormulaEverywhere) {
  constexpr auto kNone = std::numeric_limits<decltype(TypeParam::alpha)>::quiet_NaN();  // 0 for whole numbers
  std::mt19937 random(7);
  for (const auto& [width, height] : {std::pair{9, 7}, {1, 5}, {6, 1}, {1, 1}, {2, 2}}) {
    GuardedWorld<TypeParam> world(width + 1, height + 1);
    world.Fill({kNone, kNone, kNone, kNone});  // what is beyond the last pixels must not be read
    world.World()->width = width;
    world.World()->height = height;
    Scatter(world, random);
    const auto draw = [&] {
      const PF_Fixed place = static_cast<PF_Fixed>(random() % (12 << 16)) - (2 << 16);
      const PF_Fixed places[] = {place, place, place, place >> 16 << 16, INT32_MIN, INT32_MAX};
      return places[random() % 6];
    };
    for (int i = 0; i < 3000; ++i) {
      const PF_Fixed x = draw(), y = draw();
      SCOPED_TRACE(testing::Message() << x << ", " << y << " of " << width << " x " << height);
      const long double u = std::clamp(x / 65536.0L, 0.0L, width - 1.0L);
      const long double v = std::clamp(y / 65536.0L, 0.0L, height - 1.0L);
      const Means near = MeansOf(world, [&](int column, int row) {
        return std::max(1 - std::abs(u - column), 0.0L) * std::max(1 - std::abs(v - row), 0.0L);
      });
      ExpectNearest(SampleBilinear<TypeParam>(*world.World(), x, y),
                    near.alphas > 0 ? near.byAlpha : near.plain);
      const int column = static_cast<int>(std::floor(u + 0.5L)), row = static_cast<int>(std::floor(v + 0.5L));
      ExpectNearest(SampleNearest<TypeParam>(*world.World(), x, y), Channels(world.At(column, row)));
    }
  }
}

TEST(ImageTest, OverBorrowsItsPixelsAndACloneHasThemInRowsOfItsOwn) {
  GuardedWorld<PF_Pixel> world(5, 3);
  std::mt19937 random(1);
  Scatter(world, random);
  Image clone;
  {
    const Image image = Image::Over(world.World()->data, 5, 3, Depth::kBits8,
                                    static_cast<std::size_t>(world.World()->rowbytes));
    clone = image.Clone();
  }
  for (int row = 0; row < 3; ++row) {
    EXPECT_EQ(std::memcmp(clone.Row<PF_Pixel>(row).data(), &world.At(0, row), 5 * sizeof(PF_Pixel)), 0);
  }
  EXPECT_TRUE(world.GuardsIntact());
}

}  // namespace
}  // namespace minihost
