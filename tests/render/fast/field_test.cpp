// The field by batches against NextFlake.
#include "effect/render/fast/field.h"

#include "effect/render/plain/field.h"
#include "tests/pixel/fast/stage.h"
#include "tests/render/fast/batches.h"
#include "tests/support/random_frame.h"

namespace {

// The field does not know of depths.
TEST(FastField, HasNextFlakeInEveryLane) {
  for (const CpuPath path : SupportedPaths()) {
    for (std::uint32_t seed = 1; seed <= 1000; ++seed) {
      RandomFrame<PF_Pixel> random(seed);
      const FrameField& frame = random.record;
      FlakeStreams plain(frame);
      BatchStreams streams(frame);
      ForEachBatch(seed % 7 == 0 ? 700 : frame.flakeCount, [&](FlakeBatch& batch) {
        NextBatch(frame, streams, batch, path);
        for (std::size_t i = batch.first; i < batch.last; ++i) {
          FlakeSegment want;
          const bool drawn = NextFlake(frame, plain, want);
          ASSERT_TRUE(batch.drawn[i] == (drawn ? 1.0 : 0.0) && batch.sizeDraw[i] == want.sizeDraw)
              << "seed " << seed << ", lane " << i << ", path " << static_cast<int>(path);
          if (!drawn) {
            continue;
          }
          const StrokeBatch& stroke = batch.stroke;
          ASSERT_EQ((std::array{Bits(stroke.startX[i]), Bits(stroke.startY[i]), Bits(stroke.endX[i]),
                                Bits(stroke.endY[i]), Bits(batch.depth[i]), Bits(batch.scale[i]),
                                Bits(batch.wiggle[i])}),
                    (std::array{Bits(want.start.x), Bits(want.start.y), Bits(want.end.x), Bits(want.end.y),
                                Bits(want.depth), Bits(want.scale), Bits(want.wiggle)}))
              << "seed " << seed << ", lane " << i << ", path " << static_cast<int>(path);
        }
      });
      ASSERT_FALSE(HasFatalFailure());
    }
  }
}

}  // namespace
