// The flake loop by batches: field, shading, coverage and blending, each a stage over up to 128 flakes.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <memory>

#include "effect/pixel/blend_list.h"
#include "effect/pixel/coverage_list.h"
#include "effect/render/batch_field.h"
#include "effect/render/batch_shading.h"
#include "effect/render/flake_loop.h"

namespace {

// What the stages hand to each other, a few hundred kilobytes, for as long as the pass.
template <class T>
struct Scratch {
  explicit Scratch(const FrameSetup<T>& frame) : streams(frame), list(frame.output->width) {}

  BatchStreams streams;
  FlakeBatch batch;
  ShadedBatch<T> shaded;
  StrokeTerms terms;
  CoverageList<T> list;
};

template <class T>
BlendMode ModeOf(const FrameSetup<T>& frame, std::int32_t inFront) {
  if (inFront == 0) {
    return BlendMode::kCompositeUnder;
  }
  return frame.transferOp == JLightenT<T> ? BlendMode::kLighten : BlendMode::kComposite;
}

// Blends what is listed of the flakes from `lane` to `last` - 1, a run of flakes on the same side of the
// layer at a time.
template <class T>
void BlendRuns(const FrameSetup<T>& frame, const Scratch<T>& scratch, std::size_t lane, std::size_t last,
               CpuPath path) {
  const Lanes<std::int32_t>& inFront = scratch.shaded.inFront;
  std::size_t begin = 0;
  while (lane < last) {
    const std::int32_t side = inFront[lane];
    while (lane < last && inFront[lane] == side) {
      ++lane;
    }
    const std::size_t end = scratch.list.ends[lane - 1];
    BlendList(scratch.list, begin, end, scratch.shaded.colours, ModeOf(frame, side), frame.output->data,
              path);
    begin = end;
  }
}

template <class T>
void DrawBatch(const FrameSetup<T>& frame, Scratch<T>& scratch, CpuPath path) {
  const PF_LayerDef& output = *frame.output;
  const FlakeBatch& batch = scratch.batch;
  SetStrokeTerms(batch.stroke, frame.scale, output.width, output.height, scratch.terms, path);
  ListCursor cursor = {.lane = batch.first};
  bool done = false;
  while (!done) {
    const std::size_t firstListed = cursor.lane;
    done = ListCoverage(scratch.terms, scratch.shaded.peakAlpha, frame.scale, batch.last, cursor,
                        static_cast<std::uint32_t>(output.rowbytes), scratch.list, path);
    BlendRuns(frame, scratch, firstListed, std::min(cursor.lane + 1, batch.last), path);
  }
}

}  // namespace

template <class T>
bool FastRoadServes(const FrameSetup<T>& frame) {
  const PF_LayerDef& output = *frame.output;
  const std::int64_t bytes = std::int64_t{output.rowbytes} * output.height;
  return std::endian::native == std::endian::little &&
         (frame.transferOp == JLightenT<T> || frame.transferOp == JCompositeT<T>)&&frame.underOp ==
             JCompositeUnderT<T> &&
         output.width > 0 && output.height > 0 && output.rowbytes > 0 &&
         bytes <= std::numeric_limits<std::uint32_t>::max();
}

template <class T>
PF_Err DrawFlakesFast(const FrameSetup<T>& frame, CpuPath path) {
  const auto scratch = std::make_unique<Scratch<T>>(frame);
  FlakeBatch& batch = scratch->batch;
  PF_Err status = PF_Err_NONE;
  constexpr std::int64_t kFlakes = kLanes;
  for (std::int64_t start = kFirstBatch; start < frame.flakeCount; start += kFlakes) {
    batch.first = static_cast<std::size_t>(std::max<std::int64_t>(-start, 0));
    batch.last = static_cast<std::size_t>(std::min(frame.flakeCount - start, kFlakes));
    NextBatch(frame, scratch->streams, batch, path);
    ShadeBatch(frame, scratch->streams, batch, scratch->shaded, status, path);
    DrawBatch(frame, *scratch, path);
    if (batch.last == kLanes && batch.drawn[kLanes - 1] != 0) {
      const auto index = static_cast<std::int32_t>(start) + static_cast<std::int32_t>(kLanes) - 1;
      status = frame.inData->inter.progress(frame.inData->effect_ref, index, frame.flakeCount);
      if (status != PF_Err_NONE) {
        break;
      }
    }
  }
  return status;
}

template bool FastRoadServes(const FrameSetup<PF_Pixel>&);
template bool FastRoadServes(const FrameSetup<PF_Pixel16>&);
template bool FastRoadServes(const FrameSetup<PF_PixelFloat>&);
template PF_Err DrawFlakesFast(const FrameSetup<PF_Pixel>&, CpuPath);
template PF_Err DrawFlakesFast(const FrameSetup<PF_Pixel16>&, CpuPath);
template PF_Err DrawFlakesFast(const FrameSetup<PF_PixelFloat>&, CpuPath);
