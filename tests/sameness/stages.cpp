// In place of the effect's own choice of a loop: prints what each stage of both makes of the record, and
// draws by both.  The first line in which two builds differ names the stage, and the flakes.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "effect/pixel/rasterizer.h"
#include "effect/render/draw_flakes.h"
#include "effect/render/fast/loop.h"
#include "effect/render/fast/scratch.h"
#include "effect/render/plain/field.h"
#include "effect/render/plain/loop.h"
#include "effect/render/plain/shading.h"

namespace {

// What a stage made, printed where it ends.
class Stage {
 public:
  explicit Stage(const std::string& name) : name_(name) {}
  ~Stage() { std::printf("%s %016llx\n", name_.c_str(), static_cast<unsigned long long>(hash_)); }
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  void AddBytes(const void* bytes, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
      hash_ = (hash_ ^ static_cast<const unsigned char*>(bytes)[i]) * 0x100000001b3u;
    }
  }
  template <class... Values>
  void Add(const Values&... values) {
    (AddBytes(&values, sizeof values), ...);
  }

 private:
  std::string name_;
  std::uint64_t hash_ = 0xcbf29ce484222325u;
};

template <class T>
void PrintWorld(const char* name, const PF_LayerDef* world) {
  Stage stage(name);
  for (int row = 0; world != nullptr && row < world->height; ++row) {
    stage.AddBytes(static_cast<const char*>(world->data) + std::ptrdiff_t{row} * world->rowbytes,
                   static_cast<std::size_t>(world->width) * sizeof(T));
  }
}

template <class T>
void PrintRecord(const FrameSetup<T>& frame) {
#define VINTREL_PRINT(field) std::printf("record, " #field " %a\n", static_cast<double>(frame.field))
  VINTREL_PRINT(frameSeconds);
  VINTREL_PRINT(frameWidth);
  VINTREL_PRINT(frameHeight);
  VINTREL_PRINT(fieldWidth);
  VINTREL_PRINT(fieldHeight);
  VINTREL_PRINT(offsetX);
  VINTREL_PRINT(offsetY);
  VINTREL_PRINT(offsetDeltaX);
  VINTREL_PRINT(offsetDeltaY);
  VINTREL_PRINT(groundY);
  VINTREL_PRINT(embedDistance);
  VINTREL_PRINT(spreadTan);
  VINTREL_PRINT(fallDistance);
  VINTREL_PRINT(windDistance);
  VINTREL_PRINT(fallBlur);
  VINTREL_PRINT(windBlur);
  VINTREL_PRINT(wigglePhase);
  VINTREL_PRINT(phaseBlur);
  VINTREL_PRINT(wiggleAmount);
  VINTREL_PRINT(wiggleAmountEnd);
  VINTREL_PRINT(opacity);
  VINTREL_PRINT(influenceScale);
#undef VINTREL_PRINT
  Stage("record, color").Add(frame.flakeColor);
  Stage("record, seeds").Add(frame.flakeSeed, frame.illumSeed, frame.wiggleSeed);
  if (frame.noiseTable.table != nullptr) {
    Stage("record, noise").AddBytes(frame.noiseTable.table, sizeof(float) * NoiseValues<float>::kEntries);
  }
  PrintWorld<T>("record, light", frame.illumWorld);
  PrintWorld<T>("background", frame.output);
}

std::string NameOf(const char* loop, std::int64_t first, const char* stage) {
  return std::string(loop) + ", from flake " + std::to_string(first) + ", " + stage;
}

// In place of an operator: what it is asked to blend, and where.
Stage* coverage = nullptr;
const void* firstPixel = nullptr;
template <class T>
void Note(const T* top, const T*, T& result) {
  coverage->Add(*top, reinterpret_cast<const char*>(&result) - static_cast<const char*>(firstPixel));
}

template <class T>
void PrintPlain(const FrameSetup<T>& frame) {
  FlakeStreams streams(frame);
  PF_Err status = PF_Err_NONE;
  firstPixel = frame.output->data;
  for (std::int32_t first = 0; first < frame.flakeCount; first += 128) {
    std::vector<FlakeSegment> segments;
    {
      Stage field(NameOf("plain", first, "field"));
      for (std::int32_t i = first; i < std::min(first + 128, frame.flakeCount); ++i) {
        if (FlakeSegment one; NextFlake(frame, streams, one)) {
          field.Add(one.start, one.end, one.depth, one.scale, one.wiggle, one.sizeDraw);
          segments.push_back(one);
        } else {
          field.Add(i);
        }
      }
    }
    std::vector<ShadedFlake<T>> flakes;
    {
      Stage shading(NameOf("plain", first, "shading"));
      for (const FlakeSegment& segment : segments) {
        flakes.push_back(ShadeFlake(frame, segment, streams.illumination, status));
        shading.Add(flakes.back().size, flakes.back().color, flakes.back().transfer == frame.underOp);
      }
    }
    Stage covered(NameOf("plain", first, "coverage"));
    coverage = &covered;
    for (std::size_t i = 0; i < segments.size(); ++i) {
      DrawDroppyMB<T>(frame.inData, &frame.scale, flakes[i].size, segments[i].start, segments[i].end,
                      flakes[i].color, frame.output, Note<T>);
    }
  }
}

template <class T>
void PrintFast(const FrameSetup<T>& frame, CpuPath path) {
  BatchScratch<T> scratch(frame);
  FlakeBatch& batch = scratch.batch;
  ShadedBatch<T>& shaded = scratch.shaded;
  StrokeTerms& terms = scratch.terms;
  CoverageList<T>& list = scratch.list;
  const PF_LayerDef& output = *frame.output;
  PF_Err status = PF_Err_NONE;
  for (std::int64_t start = kFirstBatch; start < frame.flakeCount; start += kLanes) {
    batch.first = static_cast<std::size_t>(std::max<std::int64_t>(-start, 0));
    batch.last = static_cast<std::size_t>(std::min<std::int64_t>(frame.flakeCount - start, kLanes));
    const std::int64_t first = start + static_cast<std::int64_t>(batch.first);
    const auto forEachDrawn = [&](auto&& task) {
      for (std::size_t i = batch.first; i < batch.last; ++i) {
        if (batch.drawn[i] != 0.0) {
          task(i);
        }
      }
    };
    const StrokeBatch& stroke = batch.stroke;
    NextBatch(frame, scratch.streams, batch, path);
    Stage(NameOf("fast", first, "drawn"))
        .AddBytes(&batch.drawn[batch.first], sizeof(double) * (batch.last - batch.first));
    {
      Stage stage(NameOf("fast", first, "field"));
      forEachDrawn([&](std::size_t i) {
        stage.Add(stroke.startX[i], stroke.startY[i], stroke.endX[i], stroke.endY[i], batch.depth[i],
                  batch.scale[i], batch.wiggle[i], batch.sizeDraw[i]);
      });
    }
    ShadeBatch(frame, scratch.streams, batch, shaded, status, path);
    {
      Stage stage(NameOf("fast", first, "shading"));
      forEachDrawn([&](std::size_t i) { stage.Add(stroke.size[i], shaded.colors[i], shaded.inFront[i]); });
    }
    SetStrokeTerms(stroke, static_cast<float>(frame.flakeColor.alpha), frame.scale, output.width,
                   output.height, terms, path);
    {
      Stage stage(NameOf("fast", first, "terms"));
      forEachDrawn([&](std::size_t i) {
        stage.Add(terms.normalX[i], terms.normalY[i], terms.acrossOffset[i], terms.alongOffset[i],
                  terms.pathLength[i], terms.peakAlpha[i]);
      });
    }
    Stage stage(NameOf("fast", first, "coverage"));
    ListCursor cursor = {.lane = batch.first};
    for (bool done = false; !done;) {
      done = ListCoverage(terms, frame.scale, batch.last, cursor, static_cast<std::uint32_t>(output.rowbytes),
                          list, path);
      stage.AddBytes(list.offsets.get(), list.count * sizeof list.offsets[0]);
      stage.AddBytes(list.alphas.get(), list.count * sizeof list.alphas[0]);
    }
  }
}

}  // namespace

template <class T>
PF_Err DrawFlakes(const FrameSetup<T>& frame) {
  PrintRecord(frame);
  PrintPlain(frame);
  const bool isFast = CanDrawFast(frame);
  if (isFast) {
    PrintFast(frame, BestCpuPath());
  }
  const PF_Err status = isFast ? DrawFlakesFast(frame, BestCpuPath()).value() : DrawFlakesPlainly(frame);
  PrintWorld<T>("blending", frame.output);
  return status;
}

template PF_Err DrawFlakes(const FrameSetup<PF_Pixel>&);
template PF_Err DrawFlakes(const FrameSetup<PF_Pixel16>&);
template PF_Err DrawFlakes(const FrameSetup<PF_PixelFloat>&);
