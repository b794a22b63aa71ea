#include "bindings/openfx/render.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>

#include "bindings/openfx/courses.h"
#include "bindings/openfx/parameters.h"
#include "bindings/openfx/picture.h"
#include "bindings/openfx/spare_images.h"
#include "bindings/rate.h"
#include "hostapi/commands.h"
#include "minihost/instance.h"

namespace openfx {
namespace {

using minihost::Image;

Store& TheStore() {
  static Store store;
  return store;
}

SpareImages& TheSpareImages() {
  static SpareImages images;
  return images;
}

/// The fraction nearest to a ratio, of the smallest numbers that come within a millionth: 16/15 for 1.066667.
PF_RationalScale FractionOf(double ratio) {
  constexpr double kClose = 1e-6;
  constexpr int kMost = 10'000;
  if (!(ratio > 1.0 / kMost && ratio < kMost)) {
    return {1, 1};
  }
  for (int denominator = 1; denominator < kMost; ++denominator) {
    const double numerator = std::round(ratio * denominator);
    if (numerator >= 1 && std::abs(numerator / denominator - ratio) <= kClose * ratio) {
      return {static_cast<std::int32_t>(numerator), static_cast<std::uint32_t>(denominator)};
    }
  }
  return {static_cast<std::int32_t>(std::lround(ratio * kMost)), kMost};
}

bindings::Rate FrameRateOf(const Suites& suites, OfxImageEffectHandle effect) {
  constexpr double kUsual = 24;
  double rate = 0;
  for (const char* clip : {"Source", "Output"}) {
    OfxImageClipHandle handle = nullptr;
    OfxPropertySetHandle set = nullptr;
    if (!(rate > 0) && suites.effect->clipGetHandle(effect, clip, &handle, &set) == kOk) {
      rate = Properties(suites, set).Double("OfxImageEffectPropFrameRate", 0);
    }
  }
  if (OfxPropertySetHandle set = nullptr; !(rate > 0) && suites.effect->getPropertySet(effect, &set) == kOk) {
    rate = Properties(suites, set).Double("OfxImageEffectPropFrameRate", 0);
  }
  return bindings::NearestRate(rate > 0 ? rate : kUsual);
}

/// Where a frame lies in the effect's time.
struct Moment {
  std::int32_t ticks;
  minihost::FrameTiming timing;
  std::int64_t frame;  // the last whole one
  bool isWhole;
};

/// A time between two frames, as of a field or of a slowed clip, takes ticks of thousandths of a frame.
Moment MomentOf(double time, const bindings::Rate& rate) {
  constexpr int kParts = 1000;
  const double most = bindings::MostFrames(rate);
  const double frame = std::isnan(time) ? 0 : std::clamp(time, -most, most);
  const double ticks = std::round(frame * rate.timeStep * kParts);
  const bool isWhole = std::round(frame * kParts) == std::round(frame) * kParts || std::abs(ticks) > 2e9;
  const int parts = isWhole ? 1 : kParts;
  Moment moment{};
  moment.timing.timeScale = static_cast<std::uint32_t>(rate.timeScale) * static_cast<std::uint32_t>(parts);
  moment.timing.timeStep = moment.timing.localTimeStep = rate.timeStep * parts;
  moment.isWhole = isWhole;
  moment.frame = static_cast<std::int64_t>(isWhole ? std::round(frame) : std::floor(frame));
  moment.ticks = static_cast<std::int32_t>(isWhole ? std::round(frame) * rate.timeStep : ticks);
  return moment;
}

/// The host's way to stop a render and to see how far it is.
class Watch {
 public:
  Watch(const Suites& suites, OfxImageEffectHandle effect) : suites_(suites), effect_(effect) {}
  ~Watch() {
    if (isShown_) {
      suites_.progress->progressEnd(effect_);
    }
  }
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  minihost::Verdict Ask() {
    isStopped_ = isStopped_ || (suites_.effect->abort != nullptr && suites_.effect->abort(effect_) != 0);
    return isStopped_ ? minihost::Verdict::kStop : minihost::Verdict::kContinue;
  }

  /// Some hosts open a window for progress: only for frames that take their time.
  minihost::Verdict Report(int current, int total) {
    constexpr std::chrono::milliseconds kPatience(500);
    if (suites_.progress != nullptr && total > 0) {
      if (!isShown_ && std::chrono::steady_clock::now() - start_ > kPatience) {
        isShown_ = suites_.progress->progressStart(effect_, "Vintrel") == kOk;
      }
      if (isShown_ &&
          suites_.progress->progressUpdate(effect_, static_cast<double>(current) / total) == kReplyNo) {
        isStopped_ = true;
      }
    }
    return Ask();
  }

  bool IsStopped() const { return isStopped_; }

 private:
  const Suites& suites_;
  OfxImageEffectHandle effect_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  bool isShown_ = false;
  bool isStopped_ = false;
};

std::unique_ptr<Work> NewWork(const Moment& moment, const HostParameters& host) {
  auto work = std::make_unique<Work>();
  work->edits = TheStore().Edits();
  work->instance = std::make_unique<minihost::Instance>(TheEffect());
  work->courses = TheStore().FindCourses(moment.frame, host);
  work->timing = moment.timing;
  return work;
}

minihost::RenderResult RunEffect(const Moment& moment, const HostParameters& host, minihost::Frame frame) {
  std::unique_ptr<Work> work;
  if (moment.isWhole) {
    work = TheStore().TakeFollowing(moment.frame, moment.timing, host);
  }
  if (work == nullptr) {
    work = NewWork(moment, host);
  }
  Reading reading(host, moment.frame, work->courses);
  frame.time = moment.ticks;
  frame.timing = moment.timing;
  frame.hooks.value = [&](int parameter, double layerFrame) { return reading.At(parameter, layerFrame); };
  minihost::RenderResult result = work->instance->Render(frame);
  if (result.err == PF_Err_NONE) {
    work->courses = reading.Result();
    work->frame = moment.isWhole ? moment.frame : -1;
    TheStore().Give(std::move(work));
  }
  return result;
}

}  // namespace

const std::shared_ptr<const minihost::Effect>& TheEffect() {
  static const std::shared_ptr<const minihost::Effect> effect = minihost::Effect::Linked(&MainEntry);
  return effect;
}

void NoteEdit() {
  TheStore().NoteEdit();
}

void FreeSpareMemory() {
  TheSpareImages().Clear();
}

void Render(const Suites& suites, OfxImageEffectHandle effect, const Properties& arguments) {
  const double time = arguments.Double("OfxPropTime", 0);
  const Picture output(suites, effect, "Output", time);
  if (!output.IsThere()) {
    throw ActionError{kFailed, ""};
  }
  const Picture source(suites, effect, "Source", time);
  if (source.IsThere() && source.PixelDepth() != output.PixelDepth()) {
    throw ActionError{kErrImageFormat, "Vintrel needs pictures of one depth"};
  }
  // The whole layer: flakes fall in all of it, whatever part the host has memory for.
  const Rect& region = output.RegionOfDefinition();
  const Rect layer = region.Contains(output.Bounds()) ? region : output.Bounds();
  if (layer.IsEmpty()) {
    return;
  }
  // Without a source it snows on a layer with nothing on it.
  const bool isCovered = source.IsThere() && source.Bounds().Contains(layer);
  BorrowedImage borrowedInput(TheSpareImages(), layer.Width(), layer.Height(), output.PixelDepth());
  BorrowedImage borrowedOutput(TheSpareImages(), layer.Width(), layer.Height(), output.PixelDepth());
  Image& input = *borrowedInput;
  Image& rendered = *borrowedOutput;
  if (!isCovered) {
    std::memset(input.Data(), 0, input.RowBytes() * static_cast<std::size_t>(input.Height()));
  }
  source.CopyTo(input, layer);

  const HostParameters host(suites, effect, TheEffect()->Parameters());
  Watch watch(suites, effect);
  minihost::Frame frame;
  frame.input = &input;
  frame.output = &rendered;
  frame.downsampleX = FractionOf(arguments.Double("OfxImageEffectPropRenderScale", 1, 0));
  frame.downsampleY = FractionOf(arguments.Double("OfxImageEffectPropRenderScale", 1, 1));
  frame.pixelAspectRatio = FractionOf(output.PixelAspectRatio());
  frame.hooks.abort = [&] { return watch.Ask(); };
  frame.hooks.progress = [&](int current, int total) { return watch.Report(current, total); };
  const minihost::RenderResult result =
      RunEffect(MomentOf(time, FrameRateOf(suites, effect)), host, std::move(frame));
  if (watch.IsStopped()) {
    return;  // the host throws away what it stopped
  }
  if (result.err != PF_Err_NONE) {
    const bool isMemory = result.err == PF_Err_OUT_OF_MEMORY;
    throw ActionError{isMemory ? kErrMemory : kFailed,
                      result.message.empty() ? "the effect failed with code " + std::to_string(result.err)
                                             : result.message};
  }
  Rect window = RectOf(arguments, "OfxImageEffectPropRenderWindow");
  if (window.IsEmpty()) {
    window = output.Bounds();
  }
  output.CopyFrom(rendered, layer, window);
}

}  // namespace openfx
