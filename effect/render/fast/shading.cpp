#include "effect/render/fast/shading.h"

#include <cmath>

#include "effect/pixel/fast/flake_random.h"
#include "effect/pixel/fast/integer.h"
#include "effect/pixel/fast/pixel_words.h"
#include "effect/pixel/flake_random.h"
#include "effect/pixel/lit_channel.h"
#include "effect/pixel/pixel_type.h"
#include "effect/render/frame/flake_draws.h"
#include "effect/render/frame/light_scale.h"

namespace {

struct SampleLanes {
  Lanes<PF_Fixed> x;
  Lanes<PF_Fixed> y;
};

VINTREL_INLINE void SetSizes(const FrameField& frame, FlakeBatch& batch) {
  const double sizeVariation = frame.sizeVariation;
  const double flakeSize = frame.flakeSize;
  const float flatness = frame.flatness;
  const bool wiggleOn = frame.wiggleOn;
  for (std::size_t i = 0; i < kLanes; ++i) {
    const double factor = 1.0 + sizeVariation * SignedFraction(batch.sizeDraw[i]);
    const float size = static_cast<float>(factor * batch.scale[i] * flakeSize);
    const float flat = ((std::fabs(batch.wiggle[i]) - 1.0f) * flatness + 1.0f) * size;
    const float shown = wiggleOn ? flat : size;
    batch.stroke.size[i] = static_cast<float>(batch.drawn[i]) > 0.0f ? shown : -1.0f;
  }
}

// SamplePosition of the plain form; positions beyond 32 bits, on a copy wider than any host's, are its first
// pixel.
VINTREL_INLINE PF_Fixed SamplePositionLane(float position, float last) {
  const float below = position < last ? position : last;
  const float clamped = (position < 0.0f ? 0.0f : below) * kSampleUnit;
  return static_cast<PF_Fixed>(BelowInt32End(clamped));
}

VINTREL_INLINE void DrawSamplePoints(const FrameField& frame, const FlakeBatch& batch, BatchStreams& streams,
                                     SampleLanes& samples) {
  constexpr RandomJump kNextBatch = JumpBy(kIlluminationDraws * kLanes);
  const float spreadWidth = frame.spreadWidth;
  const float spreadHeight = frame.spreadHeight;
  const float sx = frame.scale.xScaleF;
  const float sy = frame.scale.yScaleF;
  const float lastX = static_cast<float>(frame.illumWorld->width - 1);
  const float lastY = static_cast<float>(frame.illumWorld->height - 1);
  for (std::size_t i = 0; i < kLanes; ++i) {
    const std::uint32_t state = streams.illumination[i];
    const std::uint32_t stateX = FlakeRandom::Step(state);
    const std::uint32_t stateY = FlakeRandom::Step(stateX);
    streams.illumination[i] = kNextBatch(state);
    const float perspective = static_cast<float>(batch.scale[i]);
    const float jitterX = (perspective * spreadWidth) * SignedFractionF(FlakeRandom::Result(stateX));
    const float jitterY = (spreadHeight * perspective) * SignedFractionF(FlakeRandom::Result(stateY));
    const float middleX = (batch.stroke.startX[i] + batch.stroke.endX[i]) * 0.5f;
    const float middleY = (batch.stroke.startY[i] + batch.stroke.endY[i]) * 0.5f;
    samples.x[i] = SamplePositionLane(((middleX + jitterX) * sx) * kLightScale, lastX);
    samples.y[i] = SamplePositionLane(kLightScale * ((middleY + jitterY) * sy), lastY);
  }
}

VINTREL_INLINE void ShadeLanes(const FrameField& frame, BatchStreams& streams, FlakeBatch& batch,
                               SampleLanes& samples, Lanes<std::int32_t>& inFront) {
  SetSizes(frame, batch);
  const double embedDistance = frame.embedDistance;
  for (std::size_t i = 0; i < kLanes; ++i) {
    inFront[i] = batch.depth[i] <= embedDistance ? 1 : 0;
  }
  if (frame.influence > 0.0f) {
    DrawSamplePoints(frame, batch, streams, samples);
  }
}

// LitChannel of the plain form.
template <class T>
VINTREL_INLINE std::int32_t LitLane(std::int32_t sampled, std::int32_t own, float weight) {
  const float lit = static_cast<float>(sampled - own) * weight + static_cast<float>(own);
  const std::int32_t whole = TruncateLane(lit);
  const std::int32_t notNegative = whole < 0 ? 0 : whole;
  return notNegative < PixelType<T>::kWhite ? notNegative : PixelType<T>::kWhite;
}

// LitPixel of the plain form, from lights to colours.
template <class T>
VINTREL_INLINE void LightLanes(const FrameSetup<T>& frame, Lanes<T>& pixels) {
  const float influenceScale = frame.influenceScale;
  const WidePixel own = {frame.flakeColor.alpha, frame.flakeColor.red, frame.flakeColor.green,
                         frame.flakeColor.blue};
  for (T& pixel : pixels) {
    const WidePixel light = PixelWord<T>::Split(LoadWord<T>(&pixel));
    const float weight = static_cast<float>(light.alpha) * influenceScale;
    const WidePixel lit = {own.alpha, LitLane<T>(light.red, own.red, weight),
                           LitLane<T>(light.green, own.green, weight),
                           LitLane<T>(light.blue, own.blue, weight)};
    StoreWord<T>(PixelWord<T>::Join(lit), &pixel);
  }
}
template <>
VINTREL_INLINE void LightLanes(const FrameSetup<PF_PixelFloat>& frame, Lanes<PF_PixelFloat>& pixels) {
  for (PF_PixelFloat& pixel : pixels) {
    pixel = LitPixel(frame.flakeColor, pixel, frame.influenceScale);
  }
}

}  // namespace

template <class T>
void ShadeBatch(const FrameSetup<T>& frame, BatchStreams& streams, FlakeBatch& batch, ShadedBatch<T>& shaded,
                PF_Err& status, CpuPath path) {
  SampleLanes samples;
  RunOnPath<ShadeLanes>(path, static_cast<const FrameField&>(frame), streams, batch, samples, shaded.inFront);
  if (!(frame.influence > 0.0f)) {
    shaded.colors.fill(frame.flakeColor);
    return;
  }
  // The sampler leaves its light where the colour is to be; where it fails there is none.
  shaded.colors.fill({});
  const PF_SampPB samplePoint = {.src = frame.illumWorld};
  for (std::size_t i = batch.first; i < batch.last; ++i) {
    if (batch.drawn[i] == 0.0) {
      continue;
    }
    status =
        frame.sampleFn(frame.inData->effect_ref, samples.x[i], samples.y[i], &samplePoint, &shaded.colors[i]);
  }
  RunOnPath<LightLanes<T>>(path, frame, shaded.colors);
}

template void ShadeBatch(const FrameSetup<PF_Pixel>&, BatchStreams&, FlakeBatch&, ShadedBatch<PF_Pixel>&,
                         PF_Err&, CpuPath);
template void ShadeBatch(const FrameSetup<PF_Pixel16>&, BatchStreams&, FlakeBatch&, ShadedBatch<PF_Pixel16>&,
                         PF_Err&, CpuPath);
template void ShadeBatch(const FrameSetup<PF_PixelFloat>&, BatchStreams&, FlakeBatch&,
                         ShadedBatch<PF_PixelFloat>&, PF_Err&, CpuPath);
