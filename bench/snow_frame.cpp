#include "bench/snow_frame.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <string>

#include "bench/in_turn.h"
#include "effect/entry/parameter_table.h"
#include "effect/pixel/pixel_type.h"
#include "effect/render/frame/color.h"
#include "effect/render/frame/geometry.h"
#include "effect/render/frame/light_scale.h"
#include "effect/render/frame/motion.h"
#include "effect/render/frame/seeds.h"
#include "effect/render/frame/wiggle.h"
#include "effect/render/plain/loop.h"
#include "minihost/picture/copy.h"
#include "minihost/picture/sampling.h"

namespace {

constexpr std::int32_t kFramesASecond = 24;
constexpr std::int32_t kSecondsOfSnow = 2;

// A host that lends a parameter where the snow says what it is, and refuses it otherwise, so that the effect
// takes its default.  Its reference is the snow.
PF_Err CheckOut(PF_ProgPtr snowOfHost, std::int32_t index, std::int32_t, std::int32_t, std::uint32_t,
                PF_ParamDef* def) {
  const Snow& snow = *static_cast<const Snow*>(snowOfHost);
  if (index == kOffset) {
    constexpr PF_Fixed kHalf = 1 << 15;
    def->u.td.x_value = snow.width * kHalf;
    def->u.td.y_value = snow.height * kHalf;
    return PF_Err_NONE;
  }
  const auto isIndex = [index](const auto& number) { return number.first == index; };
  const auto last = std::find_if(snow.numbers.rbegin(), snow.numbers.rend(), isIndex);
  if (last == snow.numbers.rend()) {
    return PF_Err_BAD_CALLBACK_PARAM;
  }
  switch (kParameters[static_cast<std::size_t>(index) - 1].type) {
    case PF_Param_CHECKBOX:
      def->u.bd.value = last->second != 0.0 ? 1 : 0;
      return PF_Err_NONE;
    case PF_Param_SLIDER:
      def->u.sd.value = static_cast<std::int32_t>(last->second);
      return PF_Err_NONE;
    case PF_Param_POPUP:
      def->u.pd.value = static_cast<std::int32_t>(last->second);
      return PF_Err_NONE;
    default:
      def->u.fs_d.value = last->second;
      return PF_Err_NONE;
  }
}

PF_InData MakeHost(PF_UtilCallbacks& utils, Snow& snow) {
  static const SPBasicSuite kNoSuites = {};
  utils.ansi.cos = [](double v) { return std::cos(v); };
  utils.ansi.sqrt = [](double v) { return std::sqrt(v); };
  utils.ansi.tan = [](double v) { return std::tan(v); };
  PF_InData host = {};
  host.utils = &utils;
  host.inter.checkout_param = CheckOut;
  host.inter.checkin_param = [](PF_ProgPtr, PF_ParamDef*) -> PF_Err { return PF_Err_NONE; };
  host.inter.progress = [](PF_ProgPtr, std::int32_t, std::int32_t) -> PF_Err { return PF_Err_NONE; };
  host.effect_ref = &snow;
  host.pica_basicP = &kNoSuites;
  host.current_time = kFramesASecond * kSecondsOfSnow - 1;
  host.time_step = 1;
  host.local_time_step = 1;
  host.time_scale = kFramesASecond;
  host.shutter_angle = static_cast<PF_Fixed>(snow.shutterDegrees / 360.0 * 65536.0);
  host.downsample_x = {1, 1};
  host.downsample_y = {1, 1};
  host.pixel_aspect_ratio = {1, 1};
  return host;
}

// What the host of the tool answers.
template <class T>
PF_Err Sample(PF_ProgPtr, PF_Fixed x, PF_Fixed y, const PF_SampPB* params, T* pixel) {
  *pixel = minihost::SampleBilinear<T>(*params->src, x, y);
  return PF_Err_NONE;
}

std::size_t BytesOf(const minihost::Image& image) {
  return image.RowBytes() * static_cast<std::size_t>(image.Height());
}

void CheckEqual(const minihost::Image& got, const minihost::Image& wanted, const char* form) {
  if (std::memcmp(got.Data(), wanted.Data(), BytesOf(wanted)) != 0) {
    throw Difference(std::string(form) + " left other bytes in the picture than it must");
  }
}

}  // namespace

minihost::Image PaintBackground(int width, int height, minihost::Depth depth) {
  constexpr double kGrain = 0.15;
  minihost::Image image(width, height, depth);
  std::uint32_t state = 1;
  minihost::WithPixel(depth, [&](auto pixel) {
    using P = decltype(pixel);
    using Channel = typename PixelType<P>::Channel;
    constexpr double kWhite = static_cast<double>(PixelType<P>::kWhite);
    const auto channel = [&](double tone) {
      state = state * 1664525u + 1013904223u;
      return static_cast<Channel>(kWhite * (tone * (1.0 - kGrain) + kGrain * (state >> 8) * 0x1p-24));
    };
    for (int row = 0; row < height; ++row) {
      const double down = static_cast<double>(row) / height;
      int column = 0;
      for (P& place : image.Row<P>(row)) {
        const double across = static_cast<double>(column++) / width;
        const Channel red = channel(0.2 + 0.6 * down);
        const Channel green = channel(0.1 + 0.4 * (across + down));
        const Channel blue = channel(0.9 - 0.7 * across);
        place = {static_cast<Channel>(kWhite), red, green, blue};
      }
    }
  });
  return image;
}

template <class T>
SnowFrame<T>::SnowFrame(const Snow& snow)
    : snow_(snow),
      inData_(MakeHost(utils_, snow_)),
      record_{{.scale = FX_PARc(&inData_), .inData = &inData_}},
      background_(PaintBackground(snow.width, snow.height, minihost::kDepthOf<T>)),
      light_(minihost::Resized(background_, snow.width / kLightReduction, snow.height / kLightReduction)),
      pictures_{background_.Clone(), background_.Clone()},
      lightWorld_(light_.World()) {
  Restore();
  Fill();
}

// The steps of SetUpFrame, but for those that ask the host for worlds and suites.
template <class T>
void SnowFrame<T>::Fill() {
  PF_OutData out = {};
  Fxenv env(&inData_, &out, nullptr, &output_);
  record_.output = env.output;
  ReadTimes(record_);
  const ViewSamples view = ReadParameters(record_);
  if (SetFrameExtent(env, record_) != PF_Err_NONE) {
    throw Difference("the frame has no extent");
  }
  record_.sampleFn = Sample<T>;
  SetFieldGeometry(record_, view);
  SetFlakeColor(record_, ReadColor(record_));
  MotionSums sums;
  IntegrateMotion(record_, SequenceState(), sums);
  SetTravel(record_, sums);
  SetSeeds(record_);
  record_.illumWorld = &lightWorld_;
  SetShutterMotion(record_);
  if (SetWiggle(record_) != PF_Err_NONE) {
    throw std::bad_alloc();
  }
}

template <class T>
void SnowFrame<T>::Restore() {
  current_ = 1 - current_;
  std::memcpy(pictures_[current_].Data(), background_.Data(), BytesOf(background_));
  output_ = pictures_[current_].World();
}

template <class T>
void SnowFrame<T>::SetExpected() {
  Restore();
  DrawFlakesPlainly(record_);
  expected_ = Picture().Clone();
  if (std::memcmp(expected_.Data(), background_.Data(), BytesOf(background_)) == 0) {
    throw Difference("the plain loop drew nothing");
  }
}

template <class T>
void SnowFrame<T>::CheckUnchanged(const char* form) const {
  CheckEqual(Picture(), background_, form);
}

template <class T>
double SnowFrame<T>::Time(const char* form, const std::function<void(const FrameSetup<T>&)>& draw) {
  Restore();
  const double seconds = SecondsOf([&] { draw(record_); });
  CheckEqual(Picture(), expected_, form);
  return seconds;
}

template class SnowFrame<PF_Pixel>;
template class SnowFrame<PF_Pixel16>;
template class SnowFrame<PF_PixelFloat>;
