#include "effect/render/flake_shading.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

#include "tests/render/reference_flake.h"
#include "tests/support/random_frame.h"

namespace {

template <class T>
class Shading : public testing::Test {};
using Depths = testing::Types<PF_Pixel, PF_Pixel16, PF_PixelFloat>;
TYPED_TEST_SUITE(Shading, Depths);

TYPED_TEST(Shading, SizeColourOperatorSampleAndDrawsAreTheReferenceToTheBit) {
  using T = TypeParam;
  int lit = 0;
  for (std::uint32_t seed = 0; seed < 2500; ++seed) {
    RandomFrame<T> random(seed);
    FrameSetup<T>& frame = random.Record();
    FrameHost& host = random.Host();
    host.answer = [](const HostCall& call) { return call.x % 3; };
    FlakeStreams streams(frame);
    FlakeRandom illumination(frame.illumSeed);
    reference::Flakes<T> reference(frame);
    for (int i = 0; i < std::min(frame.flakeCount, 40) && !random.Broken(); ++i) {
      FlakeSegment segment;
      if (!NextFlake(frame, streams, segment)) continue;
      if (i % 8 == 0) segment.depth = frame.embedDistance;                            // not behind the layer
      if (i % 8 == 1) segment.depth = std::nextafter(frame.embedDistance, INFINITY);  // behind it
      // A scale whose steps are so coarse that the order of the size's products shows.
      frame.flakeSize = i % 8 == 2 ? 1e308 : random.Look().size;
      if (i % 8 == 2) segment.scale = 1e-320;
      PF_Err status = 7, wantStatus = 7;
      host.calls.clear();
      const ShadedFlake<T> got = ShadeFlake(frame, segment, illumination, status);
      const std::vector<HostCall> calls = std::exchange(host.calls, {});
      const T want = reference.Light(segment, wantStatus);
      ASSERT_EQ(status, wantStatus);
      ASSERT_EQ(calls, host.calls) << seed << " " << i;
      ASSERT_EQ(0, std::memcmp(&got.colour, &want, sizeof(T))) << seed << " " << i;
      ASSERT_EQ(got.size, reference.Size(segment)) << seed << " " << i;
      ASSERT_EQ(got.transfer, reference.Operator(segment));
      lit += std::memcmp(&got.colour, &frame.flakeColor, sizeof(T)) != 0;
    }
    ASSERT_TRUE(host.samplesInside) << seed;
    const auto tails = reference.Tails();
    for (std::size_t i = 3; i < 6; ++i) ASSERT_EQ(illumination.Next(), tails[i]) << seed;
  }
  EXPECT_GT(lit, 5000);
}

/// One flake from (100, 40) to (104, 48), halfway into the scene, over a copy of 5 x 4 pixels.
template <class T>
struct OneFlake {
  OneFlake() {
    host.inData.downsample_x = {1, 1};
    host.inData.downsample_y = {1, 2};
    host.inData.pixel_aspect_ratio = {2, 1};
    host.inData.time_scale = 1;
    look = {.size = 4, .opacity = 100, .influence = 100, .compositeWithOriginal = true};
    look.color = {255, 255, 0, 51};
  }
  ShadedFlake<T> Shade(float wiggle = 0.0f, std::int32_t sizeDraw = 32767) {
    FillRecord(look, record);
    record.sampleFn = SampleNearestMock<T>;
    record.illumWorld = copy.World();
    FlakeRandom illumination(0);
    PF_Err status = 0;
    return ShadeFlake(record, FlakeSegment{start, end, 150, 0.5, wiggle, sizeDraw}, illumination, status);
  }
  FrameHost host;
  SnowLook look;
  FloatPoint start{100, 40}, end{104, 48};
  GuardedWorld<T> copy{5, 4};
  FrameSetup<T> record{{.scale = FX_PARc(&host.inData), .inData = &host.inData}};
};

TYPED_TEST(Shading, WorkedSizes) {
  OneFlake<TypeParam> one;
  one.look.influence = 0;
  one.look.amount = 1;
  const struct {
    double variation, flatness;
    float wiggle;
    std::int32_t draw;
    float want;
  } cases[] = {{0, 0, 0, 0, 2},       {50, 0, 0, 32767, 3}, {50, 0, 0, 0, 1}, {0, 100, 0, 5, 0},
               {0, 100, -0.5f, 5, 1}, {0, 50, 0, 5, 1},     {0, 50, 1, 5, 2}};
  for (const auto& c : cases) {
    one.look.sizeVariation = c.variation;
    one.look.flatness = c.flatness;
    EXPECT_EQ(one.Shade(c.wiggle, c.draw).size, c.want)
        << c.variation << " " << c.flatness << " " << c.wiggle;
  }
  EXPECT_TRUE(one.host.calls.empty()) << "no light, no sample";
}

TYPED_TEST(Shading, WorkedLight) {
  using T = TypeParam;
  OneFlake<T> one;
  using C = decltype(T::alpha);
  const C white = sizeof(C) == 1 ? C(255) : sizeof(C) == 2 ? C(32768) : C(1);
  const T green{white, 0, white, 0};
  // The middle of the path is (102, 44): (5.1, 2.2) in the copy at half the columns and rows.
  struct {
    FloatPoint shift;
    PF_Fixed column, row;
  } cases[] = {{{-60, 0}, 137626, 144179},
               {{0, 0}, 4 * 65536, 144179},
               {{-102, -44}, 0, 0},
               {{-200, -100}, 0, 0},
               {{900, 900}, 4 * 65536, 3 * 65536}};
  for (const auto& c : cases) {
    one.copy.Fill(green);
    one.start = {100 + c.shift.x, 40 + c.shift.y};
    one.end = {104 + c.shift.x, 48 + c.shift.y};
    one.host.calls.clear();
    const T opaque = one.Shade().colour;
    ASSERT_EQ(one.host.calls.size(), 1u);
    EXPECT_NEAR(one.host.calls[0].x, c.column, 1);
    EXPECT_NEAR(one.host.calls[0].y, c.row, 1);
    EXPECT_EQ(0, std::memcmp(&opaque, &green, sizeof(T))) << "an opaque layer under full influence";
    one.copy.Fill(T{0, 0, white, 0});
    const T clear = one.Shade().colour;
    EXPECT_EQ(0, std::memcmp(&clear, &one.record.flakeColor, sizeof(T))) << "a transparent layer";
  }
  // A jitter box of 10 x 20 at half scale, and the first two draws of seed 0: 0 and 5758 of 32767.
  FlakeRandom draws(0);
  const double b1 = draws.Next() / 16383.5 - 1, b2 = draws.Next() / 16383.5 - 1;
  one.start = one.end = {40, 44};
  one.look.spreadWidth = 10;
  one.look.spreadHeight = 20;
  one.host.calls.clear();
  one.Shade();
  EXPECT_NEAR(one.host.calls.at(0).x, (40 + 5 * b1) / 20 * 65536, 2);
  EXPECT_NEAR(one.host.calls.at(0).y, (44 + 10 * b2) / 20 * 65536, 2);
}

}  // namespace
