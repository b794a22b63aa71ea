#include "effect/render/fast/loop.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

#include "effect/pixel/fast/blend_list.h"
#include "effect/render/fast/scratch.h"

namespace {

template <class T>
BlendMode ModeOf(const FrameSetup<T>& frame, std::int32_t inFront) {
  if (inFront == 0) {
    return BlendMode::kCompositeUnder;
  }
  return frame.transferOp == JLightenT<T> ? BlendMode::kLighten : BlendMode::kComposite;
}

// Blends what is listed, a run of flakes on the same side of the layer at a time.
template <class T>
void BlendRuns(const FrameSetup<T>& frame, const ShadedBatch<T>& shaded, const CoverageList<T>& list,
               CpuPath path) {
  constexpr std::size_t kBlock = CoverageList<T>::kBlock;
  const auto sideAt = [&](std::size_t entry) { return shaded.inFront[list.lanes[entry / kBlock]]; };
  std::size_t begin = 0;
  while (begin < list.count) {
    const std::int32_t side = sideAt(begin);
    std::size_t end = begin + kBlock;
    while (end < list.count && sideAt(end) == side) {
      end += kBlock;
    }
    BlendList(list, begin, end, shaded.colors, ModeOf(frame, side), frame.output->data, path);
    begin = end;
  }
}

template <class T>
void DrawBatch(const FrameSetup<T>& frame, BatchScratch<T>& scratch, CpuPath path) {
  const PF_LayerDef& output = *frame.output;
  const auto peakAlpha = static_cast<float>(frame.flakeColor.alpha);
  SetStrokeTerms(scratch.batch.stroke, peakAlpha, frame.scale, output.width, output.height, scratch.terms,
                 path);
  ListCursor cursor = {.lane = scratch.batch.first};
  bool done = false;
  while (!done) {
    done = ListCoverage(scratch.terms, frame.scale, scratch.batch.last, cursor,
                        static_cast<std::uint32_t>(output.rowbytes), scratch.list, path);
    BlendRuns(frame, scratch.shaded, scratch.list, path);
  }
}

// The fast stages take roots with the processor's instruction, which rounds correctly; the plain ones ask the
// host.  Judged by the roots that are hardest to round: k^2 + k + r = (k + 1/2)^2 + (r - 1/4), so that for a
// k of 53 bits and a small r the root lies less than |r - 1/4| / 2^53 of a step from the middle between k and
// the next double, below it for r <= 0 and above it otherwise.  A double holds that square where 2^n divides
// it, n being 52 or 53; so r is even, and k follows from it bit by bit.  All are scaled by a power of two.
bool RoundsRootsCorrectly(double (*root)(double)) {
  constexpr struct {
    double square;
    double root;
  } kHardest[] = {
      {0x1.0000000000001p+0, 0x1.0000000000000p+0},  // r = 0, n = 52
      {0x1.fffffffffffffp+1, 0x1.fffffffffffffp+0},  // r = 0, n = 53
      {0x1.0000000000003p+0, 0x1.0000000000001p+0},  // r = -2, n = 52
      {0x1.ffffffffffffdp+1, 0x1.ffffffffffffep+0},  // r = -2, n = 53
      {0x1.d407bb3641da5p+0, 0x1.5a24e31b39fa6p+0},  // r = 2, n = 52
      {0x1.5b95344972fe2p+1, 0x1.a5db1ce4c605bp+0},  // r = 2, n = 53
      {0x1.256565cadcbf4p+0, 0x1.120f999e99374p+0},  // r = -4, n = 52
      {0x1.2b035c1197f48p+0, 0x1.14ac03ef7226dp+0},  // r = 4, n = 52
  };
  return std::ranges::all_of(kHardest, [root](const auto& hard) { return root(hard.square) == hard.root; });
}

// Null without memory.
template <class T>
std::unique_ptr<BatchScratch<T>> MakeScratch(const FrameSetup<T>& frame) {
  try {
    return std::make_unique<BatchScratch<T>>(frame);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace

template <class T>
bool CanDrawFast(const FrameSetup<T>& frame) {
  const PF_LayerDef& output = *frame.output;
  const std::int64_t bytes = std::int64_t{output.rowbytes} * output.height;
  const bool littleEndian = std::endian::native == std::endian::little;
  const bool ownInFront = frame.transferOp == JLightenT<T> || frame.transferOp == JCompositeT<T>;
  const bool ownBehind = frame.underOp == JCompositeUnderT<T>;
  const bool hasPixels = output.width > 0 && output.height > 0 && output.rowbytes > 0;
  const bool offsetsFit = bytes <= std::numeric_limits<std::uint32_t>::max();
  return littleEndian && ownInFront && ownBehind && hasPixels && offsetsFit &&
         RoundsRootsCorrectly(frame.inData->utils->ansi.sqrt);
}

template <class T>
std::optional<PF_Err> DrawFlakesFast(const FrameSetup<T>& frame, CpuPath path) {
  const std::unique_ptr<BatchScratch<T>> scratch = MakeScratch(frame);
  if (scratch == nullptr) {
    return std::nullopt;
  }
  FlakeBatch& batch = scratch->batch;
  PF_Err status = PF_Err_NONE;
  constexpr std::int64_t kFlakes = kLanes;
  for (std::int64_t start = kFirstBatch; start < frame.flakeCount; start += kFlakes) {
    batch.first = static_cast<std::size_t>(std::max<std::int64_t>(-start, 0));
    batch.last = static_cast<std::size_t>(std::min(frame.flakeCount - start, kFlakes));
    NextBatch(frame, scratch->streams, batch, path);
    ShadeBatch(frame, scratch->streams, batch, scratch->shaded, status, path);
    DrawBatch(frame, *scratch, path);
    if (batch.last == kLanes && batch.drawn[kLanes - 1] != 0.0) {
      const auto index = static_cast<std::int32_t>(start) + static_cast<std::int32_t>(kLanes) - 1;
      status = frame.inData->inter.progress(frame.inData->effect_ref, index, frame.flakeCount);
      if (status != PF_Err_NONE) {
        break;
      }
    }
  }
  return status;
}

template bool CanDrawFast(const FrameSetup<PF_Pixel>&);
template bool CanDrawFast(const FrameSetup<PF_Pixel16>&);
template bool CanDrawFast(const FrameSetup<PF_PixelFloat>&);
template std::optional<PF_Err> DrawFlakesFast(const FrameSetup<PF_Pixel>&, CpuPath);
template std::optional<PF_Err> DrawFlakesFast(const FrameSetup<PF_Pixel16>&, CpuPath);
template std::optional<PF_Err> DrawFlakesFast(const FrameSetup<PF_PixelFloat>&, CpuPath);
