#include "bench/staged_loop.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

#include "bench/in_turn.h"
#include "effect/pixel/fast/blend_list.h"
#include "effect/pixel/rasterizer.h"
#include "effect/render/fast/scratch.h"
#include "effect/render/plain/field.h"
#include "effect/render/plain/shading.h"

namespace {

using Clock = std::chrono::steady_clock;

// The times of one stage, batch by batch.  The clock of the thread's own time would take longer than a stage
// of a batch, so this one also runs while the machine does other work; a batch with such a pause in it stands
// out by far, and counts as much as the median.
class StageTimes {
 public:
  void Add(double seconds) { batches_.push_back(seconds); }

  double Total() const {
    constexpr double kPaused = 20.0;
    if (batches_.empty()) {
      return 0.0;
    }
    const double median = Median(batches_);
    double total = 0.0;
    for (const double seconds : batches_) {
      total += seconds < kPaused * median ? seconds : median;
    }
    return total;
  }

 private:
  Samples batches_;
};

// Gives the time since it was last asked to one stage after another.
class Stopwatch {
 public:
  void Start() { last_ = Clock::now(); }
  void AddTo(StageTimes& times) {
    const Clock::time_point now = Clock::now();
    times.Add(std::chrono::duration<double>(now - last_).count());
    last_ = Clock::now();
  }

 private:
  Clock::time_point last_;
};

}  // namespace

template <class T>
FastSeconds DrawInStages(const FrameSetup<T>& frame, CpuPath path,
                         const std::function<void(const CoverageList<T>&)>& look) {
  const BlendMode mode = frame.transferOp == JLightenT<T> ? BlendMode::kLighten : BlendMode::kComposite;
  const PF_LayerDef& output = *frame.output;
  const auto scratch = std::make_unique<BatchScratch<T>>(frame);
  auto& [streams, batch, shaded, terms, list] = *scratch;
  StageTimes field, shading, blend, termsTimes, listTimes;
  Stopwatch watch;
  PF_Err status = PF_Err_NONE;
  constexpr std::int64_t kFlakes = kLanes;
  for (std::int64_t start = kFirstBatch; start < frame.flakeCount; start += kFlakes) {
    batch.first = static_cast<std::size_t>(std::max<std::int64_t>(-start, 0));
    batch.last = static_cast<std::size_t>(std::min(frame.flakeCount - start, kFlakes));
    watch.Start();
    NextBatch(frame, streams, batch, path);
    watch.AddTo(field);
    ShadeBatch(frame, streams, batch, shaded, status, path);
    watch.AddTo(shading);
    SetStrokeTerms(batch.stroke, static_cast<float>(frame.flakeColor.alpha), frame.scale, output.width,
                   output.height, terms, path);
    watch.AddTo(termsTimes);
    ListCursor cursor = {.lane = batch.first};
    bool done = false;
    while (!done) {
      watch.Start();
      done = ListCoverage(terms, frame.scale, batch.last, cursor, static_cast<std::uint32_t>(output.rowbytes),
                          list, path);
      watch.AddTo(listTimes);
      if (look) {
        look(list);
        watch.Start();
      }
      BlendList(list, 0, list.count, shaded.colors, mode, output.data, path);
      watch.AddTo(blend);
    }
  }
  return {field.Total(), shading.Total(), termsTimes.Total(), listTimes.Total(), blend.Total()};
}

template <class T>
PlainSeconds DrawInStagesPlainly(const FrameSetup<T>& frame) {
  FlakeStreams streams(frame);
  std::vector<FlakeSegment> segments;
  std::vector<ShadedFlake<T>> flakes;
  StageTimes field, shading, drawing;
  Stopwatch watch;
  PF_Err status = PF_Err_NONE;
  constexpr std::int32_t kFlakes = kLanes;
  for (std::int32_t start = 0; start < frame.flakeCount; start += kFlakes) {
    segments.clear();
    flakes.clear();
    const std::int32_t end = std::min(start + kFlakes, frame.flakeCount);
    watch.Start();
    for (std::int32_t i = start; i < end; ++i) {
      FlakeSegment segment;
      if (NextFlake(frame, streams, segment)) {
        segments.push_back(segment);
      }
    }
    watch.AddTo(field);
    for (const FlakeSegment& segment : segments) {
      flakes.push_back(ShadeFlake(frame, segment, streams.illumination, status));
    }
    watch.AddTo(shading);
    for (std::size_t i = 0; i < segments.size(); ++i) {
      const ShadedFlake<T>& flake = flakes[i];
      DrawDroppyMB<T>(frame.inData, &frame.scale, flake.size, segments[i].start, segments[i].end, flake.color,
                      frame.output, flake.transfer);
    }
    watch.AddTo(drawing);
  }
  return {field.Total(), shading.Total(), drawing.Total()};
}

#define VINTREL_INSTANTIATE(T)                                                           \
  template FastSeconds DrawInStages(const FrameSetup<T>&, CpuPath,                       \
                                    const std::function<void(const CoverageList<T>&)>&); \
  template PlainSeconds DrawInStagesPlainly(const FrameSetup<T>&);
VINTREL_INSTANTIATE(PF_Pixel)
VINTREL_INSTANTIATE(PF_Pixel16)
VINTREL_INSTANTIATE(PF_PixelFloat)
#undef VINTREL_INSTANTIATE
