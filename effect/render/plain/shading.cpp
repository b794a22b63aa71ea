#include "effect/render/plain/shading.h"

#include <cmath>

#include "effect/pixel/integer.h"
#include "effect/pixel/lit_channel.h"
#include "effect/render/frame/light_scale.h"

namespace {

float FlakeSize(const FrameField& frame, const FlakeSegment& segment) {
  const double factor = 1.0 + frame.sizeVariation * SignedFraction(segment.sizeDraw);
  const float size = static_cast<float>(factor * segment.scale * frame.flakeSize);
  if (!frame.wiggleOn) {
    return size;
  }
  // A flat flake shows its edge as its wiggle passes 0 and its face at the extremes.
  return ((std::fabs(segment.wiggle) - 1.0f) * frame.flatness + 1.0f) * size;
}

// 16.16 position along one axis of the illumination copy, kept on the copy.
PF_Fixed SamplePosition(float position, std::int32_t extent) {
  const float last = static_cast<float>(extent - 1);
  const float clamped = position < 0.0f ? 0.0f : (position < last ? position : last);
  return TruncateToInt32(static_cast<double>(clamped * kSampleUnit));
}

// Where the light for a flake is taken: the middle of its path, jittered in a box that shrinks with distance.
struct SamplePoint {
  PF_Fixed x;
  PF_Fixed y;
};

SamplePoint DrawSamplePoint(const FrameField& frame, const FlakeSegment& segment, FlakeRandom& random) {
  const float perspective = static_cast<float>(segment.scale);
  const float jitterX = (perspective * frame.spreadWidth) * SignedFractionF(random.Next());
  const float jitterY = (frame.spreadHeight * perspective) * SignedFractionF(random.Next());
  const float middleX = (segment.start.x + segment.end.x) * 0.5f;
  const float middleY = (segment.start.y + segment.end.y) * 0.5f;
  const float u = ((middleX + jitterX) * frame.scale.xScaleF) * kLightScale;
  const float v = kLightScale * ((middleY + jitterY) * frame.scale.yScaleF);
  return {SamplePosition(u, frame.illumWorld->width), SamplePosition(v, frame.illumWorld->height)};
}

}  // namespace

template <class T>
ShadedFlake<T> ShadeFlake(const FrameSetup<T>& frame, const FlakeSegment& segment, FlakeRandom& illumination,
                          PF_Err& status) {
  ShadedFlake<T> flake = {FlakeSize(frame, segment), frame.flakeColor,
                          segment.depth <= frame.embedDistance ? frame.transferOp : frame.underOp};
  if (frame.influence > 0.0f) {
    const SamplePoint point = DrawSamplePoint(frame, segment, illumination);
    const PF_SampPB samplePoint = {.src = frame.illumWorld};
    T light = {};
    status = frame.sampleFn(frame.inData->effect_ref, point.x, point.y, &samplePoint, &light);
    flake.color = LitPixel(flake.color, light, frame.influenceScale);
  }
  return flake;
}

template ShadedFlake<PF_Pixel> ShadeFlake(const FrameSetup<PF_Pixel>&, const FlakeSegment&, FlakeRandom&,
                                          PF_Err&);
template ShadedFlake<PF_Pixel16> ShadeFlake(const FrameSetup<PF_Pixel16>&, const FlakeSegment&, FlakeRandom&,
                                            PF_Err&);
template ShadedFlake<PF_PixelFloat> ShadeFlake(const FrameSetup<PF_PixelFloat>&, const FlakeSegment&,
                                               FlakeRandom&, PF_Err&);
