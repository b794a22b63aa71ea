// The fast loop against the plain one: the same bits and the same calls, on every path of this machine.  Each
// stage has a test of its own, here and in pixel/fast.
#include <cstring>

#include "effect/render/fast/loop.h"
#include "effect/render/plain/loop.h"
#include "tests/pixel/fast/stage.h"
#include "tests/support/random_frame.h"

namespace {

// The bytes between the rows are guards, the same in both.
template <class T>
bool SamePixels(GuardedWorld<T>& a, GuardedWorld<T>& b) {
  const PF_LayerDef& first = *a.World();
  const auto bytes = static_cast<std::size_t>(first.rowbytes) * static_cast<std::size_t>(first.height);
  return std::memcmp(first.data, b.World()->data, bytes) == 0 && b.GuardsIntact();
}

// Renders the frame of a seed both ways, after `change` has had its hand in both.
template <class T, class Change>
void ExpectFastEqualsPlain(std::uint32_t seed, Change change) {
  RandomFrame<T> plain(seed);
  change(plain);
  const PF_Err status = DrawFlakesPlainly(plain.record);
  for (const CpuPath path : SupportedPaths()) {
    RandomFrame<T> fast(seed);
    change(fast);
    ASSERT_TRUE(CanDrawFast(fast.record)) << "seed " << seed;
    ASSERT_EQ(DrawFlakesFast(fast.record, path), status) << "seed " << seed;
    ASSERT_EQ(fast.host.calls, plain.host.calls) << "seed " << seed;
    ASSERT_TRUE(SamePixels(plain.output, fast.output))
        << "seed " << seed << ", path " << static_cast<int>(path) << ", " << sizeof(T) << " bytes a pixel";
  }
}

template <class T>
class FastLoop : public testing::Test {};
TYPED_TEST_SUITE(FastLoop, Depths);

TYPED_TEST(FastLoop, EqualsPlainOnRandomFrames) {
  for (std::uint32_t seed = 1; seed <= 600; ++seed) {
    ASSERT_NO_FATAL_FAILURE(ExpectFastEqualsPlain<TypeParam>(seed, [](RandomFrame<TypeParam>&) {}));
  }
}

TYPED_TEST(FastLoop, EqualsPlainAtTheEdgesOfBatches) {
  for (const std::int32_t flakes : {1, 2, 3, 127, 128, 129, 130, 131, 255, 256, 257, 258, 259, 1000}) {
    for (std::uint32_t seed = 1; seed <= 12; ++seed) {
      ASSERT_NO_FATAL_FAILURE(ExpectFastEqualsPlain<TypeParam>(
          seed, [flakes](RandomFrame<TypeParam>& frame) { frame.record.flakeCount = flakes; }))
          << flakes << " flakes";
    }
  }
}

TYPED_TEST(FastLoop, StopsWherePlainStops) {
  for (std::uint32_t seed = 1; seed <= 60; ++seed) {
    for (const std::int32_t stop : {1, 129, 257, 385}) {
      ASSERT_NO_FATAL_FAILURE(ExpectFastEqualsPlain<TypeParam>(seed, [stop](RandomFrame<TypeParam>& frame) {
        frame.record.flakeCount = 500;
        frame.host.answer = [stop](const HostCall& call) {
          return call.kind == HostCall::kProgress && call.x >= stop ? 77 : PF_Err_NONE;
        };
      }));
    }
  }
}

TYPED_TEST(FastLoop, LeavesOperatorsAndWorldsThatItDoesNotKnowToThePlainLoop) {
  using T = TypeParam;
  using Change = void (*)(FrameSetup<T>&, PF_LayerDef&);
  const Change changes[] = {
      [](FrameSetup<T>& frame, PF_LayerDef&) { frame.transferOp = [](const T*, const T*, T&) {}; },
      [](FrameSetup<T>& frame, PF_LayerDef&) { frame.underOp = JLightenT<T>; },
      [](FrameSetup<T>&, PF_LayerDef& world) { world.width = 0; },
      [](FrameSetup<T>&, PF_LayerDef& world) { world.height = 0; },
      [](FrameSetup<T>&, PF_LayerDef& world) { world.rowbytes = -world.rowbytes; },
      [](FrameSetup<T>&, PF_LayerDef& world) { world.rowbytes = 1 << 20, world.height = 1 << 12; },
  };
  for (const Change& change : changes) {
    RandomFrame<T> frame(1);
    EXPECT_TRUE(CanDrawFast(frame.record));
    change(frame.record, *frame.record.output);
    EXPECT_FALSE(CanDrawFast(frame.record)) << &change - changes;
  }
}

}  // namespace
