#include "bench/snow_frame.h"

#include <array>
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
#include "effect/render/plain/loop.h"
#include "minihost/picture/copy.h"
#include "minihost/picture/sampling.h"

namespace {

constexpr std::int32_t kFramesASecond = 24;
constexpr double kSecondsOfSnow = 2.0;

using Numbers = std::array<double, kParameterCount>;

Numbers NumbersOf(const Snow& snow) {
  Numbers numbers = {};
  for (const ParameterRow& row : kParameters) {
    numbers[static_cast<std::size_t>(row.id)] = row.defaultValue;
  }
  for (const auto& [index, value] : snow.numbers) {
    numbers[static_cast<std::size_t>(index)] = value;
  }
  return numbers;
}

PF_InData MakeHost(PF_UtilCallbacks& utils, double shutterDegrees) {
  utils.ansi.cos = [](double v) { return std::cos(v); };
  utils.ansi.sqrt = [](double v) { return std::sqrt(v); };
  utils.ansi.tan = [](double v) { return std::tan(v); };
  PF_InData host = {};
  host.utils = &utils;
  host.inter.progress = [](PF_ProgPtr, std::int32_t, std::int32_t) -> PF_Err { return PF_Err_NONE; };
  host.time_step = 1;
  host.local_time_step = 1;
  host.time_scale = kFramesASecond;
  host.shutter_angle = static_cast<PF_Fixed>(shutterDegrees / 360.0 * 65536.0);
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
    : inData_(MakeHost(utils_, snow.shutterDegrees)),
      record_{{.scale = FX_PARc(&inData_), .inData = &inData_}},
      background_(PaintBackground(snow.width, snow.height, minihost::kDepthOf<T>)),
      light_(minihost::Resized(background_, snow.width / kLightReduction, snow.height / kLightReduction)),
      pictures_{background_.Clone(), background_.Clone()},
      lightWorld_(light_.World()) {
  Fill(snow);
  Restore();
}

template <class T>
void SnowFrame<T>::Fill(const Snow& snow) {
  constexpr double kPercent = 0.01;
  const Numbers numbers = NumbersOf(snow);
  const auto fraction = [&](ParameterIndex index) {
    return numbers[static_cast<std::size_t>(index)] * kPercent;
  };
  record_.flakeCount = static_cast<std::int32_t>(numbers[kFlakes]);
  record_.sceneDepth = numbers[kSceneDepth];
  record_.flakeSize = numbers[kSize];
  record_.sizeVariation = fraction(kSizeVariation);
  record_.speedVariation = fraction(kSpeedVariation);
  record_.windVariation = fraction(kWindVariation);
  record_.amountVariation = fraction(kAmountVariation);
  record_.frequencyVariation = fraction(kFrequencyVariation);
  record_.stochasticWiggle = numbers[kStochasticWiggle] != 0.0;
  record_.flatness = static_cast<float>(fraction(kFlakeFlatness));
  record_.opacity = static_cast<float>(fraction(kOpacity));
  record_.influence = static_cast<float>(fraction(kInfluence));
  record_.spreadWidth = static_cast<float>(numbers[kSpreadWidth]);
  record_.spreadHeight = static_cast<float>(numbers[kSpreadHeight]);
  record_.transferMode = static_cast<std::int32_t>(numbers[kTransferMode]);
  record_.compositeWithOriginal = true;
  record_.embedDepth = fraction(kEmbedDepth);
  record_.groundLevel = fraction(kGroundLevel);

  record_.frameWidth = snow.width;
  record_.frameHeight = snow.height;
  record_.halfFrameWidth = 0.5 * snow.width;
  record_.halfFrameHeight = 0.5 * snow.height;
  const DoublePoint middle = {0.5 * snow.width, 0.5 * snow.height};
  SetFieldGeometry(record_, {numbers[kSpread], middle, middle});

  const double openSeconds = snow.shutterDegrees / 360.0 / kFramesASecond;
  record_.fallDistance = numbers[kSpeed] * kSecondsOfSnow;
  record_.windDistance = numbers[kWind] * kSecondsOfSnow;
  record_.fallBlur = numbers[kSpeed] * openSeconds;
  record_.windBlur = numbers[kWind] * openSeconds;
  record_.flakeSeed = 731;
  record_.illumSeed = 3179;
  record_.wiggleSeed = 1793;
  record_.wiggleOn = true;
  const double cycle = record_.stochasticWiggle ? 2.0 : 6.283185307179586;
  record_.wigglePhase = numbers[kFrequency] * kSecondsOfSnow * cycle;
  record_.phaseBlur = numbers[kFrequency] * openSeconds * cycle;
  record_.wiggleAmount = numbers[kAmount] * (record_.stochasticWiggle ? 2.0 : 1.0);
  record_.wiggleAmountEnd = record_.wiggleAmount;
  if (record_.stochasticWiggle && record_.noiseTable.NoiseTableLin(record_.wiggleSeed, 128, 0.0f, 0) != 0) {
    throw std::bad_alloc();
  }

  SetFlakeColor(record_, PF_Pixel{255, 255, 255, 255});
  record_.sampleFn = Sample<T>;
  record_.illumWorld = &lightWorld_;
  record_.output = &output_;
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
void SnowFrame<T>::CheckExpected(const char* form) const {
  CheckEqual(Picture(), expected_, form);
}

template <class T>
void SnowFrame<T>::CheckUnchanged(const char* form) const {
  CheckEqual(Picture(), background_, form);
}

template <class T>
double SnowFrame<T>::Time(const char* form, const std::function<void(const FrameSetup<T>&)>& draw) {
  Restore();
  const double seconds = SecondsOf([&] { draw(record_); });
  CheckExpected(form);
  return seconds;
}

template class SnowFrame<PF_Pixel>;
template class SnowFrame<PF_Pixel16>;
template class SnowFrame<PF_PixelFloat>;
