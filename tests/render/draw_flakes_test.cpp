// The choice between the loops.
#include "effect/render/draw_flakes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <vector>

#include "effect/render/fast/loop.h"
#include "effect/render/plain/loop.h"
#include "tests/support/random_frame.h"

namespace {

// Truncated to whole steps of single precision, which shows in pixels.
double CoarseRoot(double square) {
  const double root = std::sqrt(square);
  const float nearest = static_cast<float>(root);
  return static_cast<double>(nearest) > root ? static_cast<double>(std::nextafter(nearest, 0.0f))
                                             : static_cast<double>(nearest);
}

// Off by no more than a step of double precision.
double TruncatedRoot(double square) {
  const double root = std::sqrt(square);
  return std::fma(root, root, -square) > 0.0 ? std::nextafter(root, 0.0) : root;
}
double RaisedRoot(double square) {
  const double root = std::sqrt(square);
  return std::fma(root, root, -square) < 0.0 ? std::nextafter(root, INFINITY) : root;
}

template <class T, class Draw>
std::vector<std::byte> Drawn(RandomFrame<T>& random, Draw draw) {
  random.Reset();
  draw(random.record);
  const PF_LayerDef& layer = *random.output.World();
  const auto* first = static_cast<const std::byte*>(layer.data);
  return {first, first + std::ptrdiff_t{layer.rowbytes} * layer.height};
}

template <class T>
class DrawFlakesOf : public testing::Test {};
using Depths = testing::Types<PF_Pixel, PF_Pixel16, PF_PixelFloat>;
TYPED_TEST_SUITE(DrawFlakesOf, Depths);

// Where a host rounds its roots in a way of its own, they count, and the plain loop asks for them.
TYPED_TEST(DrawFlakesOf, AHostsOwnRootsAreHeeded) {
  int apart = 0;
  for (std::uint32_t seed = 0; seed < 300; ++seed) {
    RandomFrame<TypeParam> random(seed);
    EXPECT_TRUE(CanDrawFast(random.record));
    for (const auto root : {TruncatedRoot, RaisedRoot, CoarseRoot}) {
      random.host.utils.ansi.sqrt = root;
      EXPECT_FALSE(CanDrawFast(random.record));
      const std::vector<std::byte> plain = Drawn(random, DrawFlakesPlainly<TypeParam>);
      ASSERT_TRUE(Drawn(random, DrawFlakes<TypeParam>) == plain) << seed;
      const auto fast = [](const FrameSetup<TypeParam>& r) { return DrawFlakesFast(r, BestCpuPath()); };
      apart += Drawn(random, fast) != plain;
    }
  }
  EXPECT_GT(apart, 0);
}

}  // namespace
