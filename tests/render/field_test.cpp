#include "effect/render/flake_field.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <vector>

#include "tests/render/reference_flake.h"
#include "tests/support/random_frame.h"

namespace {

bool SameFloat(float a, float b) {
  return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) || (a != a && b != b);
}
bool SameDouble(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) || (a != a && b != b);
}
bool Same(const FlakeSegment& a, const FlakeSegment& b) {
  return SameFloat(a.start.x, b.start.x) && SameFloat(a.start.y, b.start.y) && SameFloat(a.end.x, b.end.x) &&
         SameFloat(a.end.y, b.end.y) && SameDouble(a.depth, b.depth) && SameDouble(a.scale, b.scale) &&
         SameFloat(a.wiggle, b.wiggle) && a.sizeDraw == b.sizeDraw;
}

std::array<int, 9> Tails(FlakeStreams s) {
  std::array<int, 9> tails{};
  for (std::size_t i = 0; i < 9; ++i) tails[i] = (i < 3 ? s.flake : i < 6 ? s.illumination : s.wiggle).Next();
  return tails;
}

TEST(Field, EveryFlakeOfRandomFramesIsTheReferenceToTheBit) {
  int drawn = 0, removed = 0;
  for (std::uint32_t seed = 0; seed < 6000; ++seed) {
    RandomFrame<PF_PixelFloat> random(seed);
    if (random.Broken()) continue;
    const auto& frame = random.Record();
    FlakeStreams streams(frame);
    reference::Flakes<PF_PixelFloat> reference(frame);
    bool beyondWrap = false;
    for (int i = 0; i < frame.flakeCount; ++i) {
      FlakeSegment got;
      const bool isDrawn = NextFlake(frame, streams, got);
      const reference::Flake want = reference.Next();
      beyondWrap |= want.beyondWrap;  // no particular place is right
      if (want.beyondWrap) continue;
      ASSERT_EQ(isDrawn, want.drawn) << seed << " flake " << i;
      ASSERT_TRUE(!isDrawn || Same(got, want.segment)) << seed << " flake " << i;
      ++(isDrawn ? drawn : removed);
    }
    if (!beyondWrap) {
      ASSERT_EQ(Tails(streams), reference.Tails()) << seed;
    }
  }
  EXPECT_GT(drawn, 300'000);
  EXPECT_GT(removed, 50'000);
}

/// Flakes of a square layer of 100 in front of a field as deep, whose cross-section at the far end is 200.
struct SquareFrame {
  explicit SquareFrame(SnowLook look) {
    host.inData.downsample_x = host.inData.downsample_y = host.inData.pixel_aspect_ratio = {1, 1};
    host.inData.time_step = host.inData.local_time_step = 1;
    host.inData.time_scale = 1;
    look.sceneDepth = look.extentWidth = look.extentHeight = 100;
    FillRecord(look, record);
  }
  std::vector<FlakeSegment> Drawn() const {
    FlakeStreams streams(record);
    std::vector<FlakeSegment> drawn(static_cast<std::size_t>(record.flakeCount));
    std::erase_if(drawn, [&](FlakeSegment& segment) { return !NextFlake(record, streams, segment); });
    return drawn;
  }
  FrameHost host;
  FrameSetup<PF_Pixel> record{{.scale = FX_PARc(&host.inData), .inData = &host.inData}};
};

TEST(Field, FirstFlakeOfSeedZero) {
  SquareFrame square({.flakes = 1, .groundLevel = 100});
  FlakeStreams streams(square.record);
  for (const int want : {20802, 6699, 3598, 753, 25395, 14414, 28657}) EXPECT_EQ(streams.flake.Next(), want);
  for (const int want : {18832, 19727}) EXPECT_EQ(streams.illumination.Next(), want);
  for (const int want : {11755, 2231, 6058}) EXPECT_EQ(streams.wiggle.Next(), want);

  const FlakeSegment flake = square.Drawn().at(0);
  EXPECT_NEAR(flake.depth, 100 + 100 * 3598 / 32767.0, 1e-9);
  EXPECT_NEAR(flake.scale, 0.90105871, 1e-8);
  EXPECT_NEAR(flake.start.x, 74.3008387, 1e-5);
  EXPECT_NEAR(flake.start.y, -3.2627527, 1e-6);
  EXPECT_EQ(flake.sizeDraw, 28657);

  square.record.offsetX = -20802 * 3.051850947599719e-05 * 200 - 1e-12;
  EXPECT_NEAR(square.Drawn().at(0).start.x, 100 * flake.scale + 50, 1e-4)
      << "just left of the field is its right";

  const double y = 6699 * 3.051850947599719e-05 * 200 - 100;
  square.record.groundY = y;
  EXPECT_EQ(square.Drawn().size(), 1u) << "a flake on the ground is drawn";
  square.record.groundY = std::nextafter(y, -101);
  EXPECT_TRUE(square.Drawn().empty());
}

TEST(Field, LawsOfManyFlakes) {
  // Nothing moves sideways without wind, spread and wiggle; speeds spread evenly from 0 to 2.
  SnowLook look{.flakes = 20'000, .speedVariation = 100, .groundLevel = 100, .speedSum = 1e6, .speedEnd = 10};
  double sum = 0, least = 9, most = -9;
  const std::vector<FlakeSegment> all = SquareFrame(look).Drawn();
  ASSERT_EQ(all.size(), 20'000u) << "ground at the bottom removes nothing";
  for (const FlakeSegment& flake : all) {
    ASSERT_EQ(flake.start.x, flake.end.x);
    // The middle of the picture is the vanishing point: in the world, the field is 200 x 200 at every depth.
    const double x = (static_cast<double>(flake.start.x) - 50) / flake.scale;
    const double y = (static_cast<double>(flake.start.y) - 50) / flake.scale;
    const double endY = (static_cast<double>(flake.end.y) - 50) / flake.scale;
    ASSERT_TRUE(std::abs(x) < 100.001 && std::abs(y) < 100.001 && endY < 100.001) << x << " " << y;
    ASSERT_TRUE(flake.depth >= 100 && flake.depth <= 200);
    if (y > 79) continue;  // ends at the ground
    sum += endY - y;
    least = std::min(least, endY - y);
    most = std::max(most, endY - y);
  }
  EXPECT_NEAR(sum / 20'000, 10 * 179 / 200.0, 0.2);
  EXPECT_NEAR(least, 0, 0.01);
  EXPECT_NEAR(most, 20, 0.01);

  // A ground on the centre line removes the lower half, and no path goes below the line.
  look.groundLevel = 0;
  int onGround = 0;
  const std::vector<FlakeSegment> upper = SquareFrame(look).Drawn();
  EXPECT_NEAR(static_cast<double>(upper.size()), 10'000, 300);
  for (const FlakeSegment& flake : upper) {
    ASSERT_TRUE(flake.start.y <= 50 && flake.end.y <= 50);
    onGround += flake.end.y == 50;
  }
  EXPECT_NEAR(onGround, 1000, 200) << "a mean fall of 10 out of 200";
}

}  // namespace
