// Shading by batches against ShadeFlake, on the plain field's flakes.
#include "effect/render/fast/shading.h"

#include "effect/render/plain/shading.h"
#include "tests/pixel/fast/stage.h"
#include "tests/render/fast/batches.h"
#include "tests/support/random_frame.h"

namespace {

void PutFlake(const FlakeSegment& flake, bool drawn, std::size_t lane, FlakeBatch& batch) {
  batch.stroke.startX[lane] = flake.start.x;
  batch.stroke.startY[lane] = flake.start.y;
  batch.stroke.endX[lane] = flake.end.x;
  batch.stroke.endY[lane] = flake.end.y;
  batch.depth[lane] = flake.depth;
  batch.scale[lane] = flake.scale;
  batch.wiggle[lane] = flake.wiggle;
  batch.sizeDraw[lane] = flake.sizeDraw;
  batch.drawn[lane] = drawn ? 1.0 : 0.0;
}

template <class T>
std::array<std::uint64_t, 6> Row(float size, const T& color, bool inFront) {
  return {Bits(size), Bits(color.alpha), Bits(color.red), Bits(color.green), Bits(color.blue), inFront};
}

template <class T>
class FastShading : public testing::Test {};
TYPED_TEST_SUITE(FastShading, Depths);

TYPED_TEST(FastShading, IsShadeFlakeInEveryLane) {
  using T = TypeParam;
  for (const CpuPath path : SupportedPaths()) {
    for (std::uint32_t seed = 1; seed <= 600; ++seed) {
      RandomFrame<T> random(seed);
      FrameSetup<T>& frame = random.record;
      random.host.answer = [](const HostCall& call) { return call.x % 5 == 0 ? 1 + call.x % 100 : 0; };
      PF_LayerDef huge = *frame.illumWorld;
      if (seed % 9 == 0) {  // a sampler that has no light to give, of a picture beyond its positions
        frame.sampleFn = [](PF_ProgPtr ref, PF_Fixed x, PF_Fixed y, const PF_SampPB*, T*) -> PF_Err {
          static_cast<FrameHost*>(ref)->calls.push_back({HostCall::kSample, x, y});
          return 512;
        };
        huge.width = huge.height = 1 << 20;
        frame.illumWorld = &huge;
        frame.spreadWidth = frame.spreadHeight = 2e6f;
      }
      FlakeStreams plain(frame);
      BatchStreams streams(frame);
      PF_Err wantStatus = 7, gotStatus = 7;  // no sample, no change
      ForEachBatch(seed % 7 == 0 ? 700 : frame.flakeCount, [&](FlakeBatch& batch) {
        Lanes<std::array<std::uint64_t, 6>> want;
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
          const bool inside = lane >= batch.first && lane < batch.last;
          FlakeSegment flake = {};
          const bool drawn = inside && NextFlake(frame, plain, flake);
          PutFlake(flake, drawn, lane, batch);
          if (drawn) {
            const auto [size, color, transfer] = ShadeFlake(frame, flake, plain.illumination, wantStatus);
            want[lane] = Row(size, color, transfer == frame.transferOp);
          }
        }
        const std::vector<HostCall> wantCalls = std::exchange(random.host.calls, {});
        ShadedBatch<T> shaded;
        ShadeBatch(frame, streams, batch, shaded, gotStatus, path);
        ASSERT_EQ(std::exchange(random.host.calls, {}), wantCalls) << "seed " << seed;
        ASSERT_EQ(gotStatus, wantStatus) << "seed " << seed;
        const auto& [colors, inFront] = shaded;
        for (std::size_t lane = batch.first; lane < batch.last; ++lane) {
          const bool drawn = batch.drawn[lane] != 0;
          ASSERT_TRUE(drawn || batch.stroke.size[lane] < 0) << "seed " << seed << ", lane " << lane;
          ASSERT_TRUE(!drawn || Row(batch.stroke.size[lane], colors[lane], inFront[lane] == 1) == want[lane])
              << "seed " << seed << ", lane " << lane << ", path " << static_cast<int>(path);
        }
      });
      ASSERT_FALSE(testing::Test::HasFatalFailure());
    }
  }
}

}  // namespace
