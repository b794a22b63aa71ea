#include "effect/render/flake_loop.h"

#include <gtest/gtest.h>

#include <cstring>
#include <utility>
#include <vector>

#include "tests/render/reference_flake.h"
#include "tests/support/random_frame.h"

namespace {

template <class T>
class FlakeLoop : public testing::Test {};
using Depths = testing::Types<PF_Pixel, PF_Pixel16, PF_PixelFloat>;
TYPED_TEST_SUITE(FlakeLoop, Depths);

template <class T>
std::vector<T> Pixels(GuardedWorld<T>& world) {
  std::vector<T> pixels;
  for (int row = 0; row < world.World()->height; ++row)
    pixels.insert(pixels.end(), &world.At(0, row), &world.At(0, row) + world.World()->width);
  return pixels;
}

template <class T>
bool SameBytes(const std::vector<T>& a, const std::vector<T>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

TYPED_TEST(FlakeLoop, PictureCallsAndStatusOfRandomFramesAreTheReference) {
  using T = TypeParam;
  int interrupted = 0, changed = 0, kept = 0;
  for (std::uint32_t seed = 0; seed < 1200; ++seed) {
    RandomFrame<T> random(seed);
    FrameHost& host = random.Host();
    // Samples fail now and then; one seed in five is interrupted at some report.
    host.answer = [seed](const HostCall& call) -> PF_Err {
      if (call.kind == HostCall::kSample) return call.x % 5 == 0 ? 1 + call.x % 100 : 0;
      return seed % 5 == 0 && (call.x == 1) == (seed % 2 == 0) ? 1000 + call.x : 0;
    };
    const std::vector<T> background = Pixels(random.Output());
    const PF_Err status = DrawFlakes(random.Record());
    ASSERT_TRUE(random.Output().GuardsIntact() && random.Illumination().GuardsIntact()) << seed;
    ASSERT_TRUE(host.samplesInside) << seed;
    const std::vector<T> picture = Pixels(random.Output());
    const std::vector<HostCall> calls = std::exchange(host.calls, {});
    if (random.Broken()) {
      ASSERT_TRUE(SameBytes(picture, background)) << seed << ": nothing to draw with";
      continue;
    }
    random.Reset();
    bool beyondWrap = false;
    const PF_Err want = reference::DrawFlakes(random.Record(), beyondWrap);
    if (beyondWrap) continue;
    ASSERT_EQ(status, want) << seed;
    ASSERT_EQ(calls, host.calls) << seed;
    ASSERT_TRUE(SameBytes(picture, Pixels(random.Output()))) << seed;
    interrupted += status >= 1000;
    kept += status > 0 && status < 1000;
    changed += !SameBytes(picture, background);
  }
  EXPECT_GT(interrupted, 50);
  EXPECT_GT(kept, 50) << "a failed sample was the last call";
  EXPECT_GT(changed, 500);
}

TYPED_TEST(FlakeLoop, AnInterruptionLeavesExactlyTheFlakesSoFar) {
  using T = TypeParam;
  FrameHost host;
  host.inData.downsample_x = host.inData.downsample_y = host.inData.pixel_aspect_ratio = {1, 1};
  host.inData.time_scale = 1;
  SnowLook look{.size = 3, .opacity = 60, .groundLevel = 100};  // no depth: every flake lies in view
  look.color = {255, 200, 220, 255};
  look.extentWidth = look.extentHeight = 90;
  GuardedWorld<T> output(90, 90);
  const auto draw = [&](int flakes) {
    look.flakes = flakes;
    output.Fill(T{});
    FrameSetup<T> frame{{.scale = FX_PARc(&host.inData), .inData = &host.inData}};
    FillRecord(look, frame);
    frame.output = output.World();
    host.calls.clear();
    const PF_Err status = DrawFlakes(frame);
    return std::pair(status, Pixels(output));
  };
  for (const int report : {1, 129, 257, 385}) {
    host.answer = nullptr;
    const auto alone = draw(report + 1).second;
    const auto less = draw(report).second;
    host.answer = [report](const HostCall& call) { return call.x == report ? -3 : 0; };
    const auto [status, picture] = draw(500);
    EXPECT_EQ(status, -3);
    EXPECT_TRUE(SameBytes(picture, alone)) << report;
    EXPECT_FALSE(SameBytes(picture, less)) << report;
    std::vector<HostCall> want;
    for (int i = 1; i <= report; i += 128) want.push_back({HostCall::kProgress, i, 500});
    EXPECT_EQ(host.calls, want) << "without light, reports are the only calls";
  }
  host.answer = nullptr;
  EXPECT_EQ(draw(1).first, 0);
  EXPECT_TRUE(host.calls.empty()) << "a single flake makes no report";
}

}  // namespace
