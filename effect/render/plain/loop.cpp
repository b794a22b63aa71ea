#include "effect/render/plain/loop.h"

#include "effect/pixel/rasterizer.h"
#include "effect/render/plain/field.h"
#include "effect/render/plain/shading.h"

template <class T>
PF_Err DrawFlakesPlainly(const FrameSetup<T>& frame) {
  constexpr std::int32_t kProgressInterval = 128;
  FlakeStreams streams(frame);
  PF_Err status = PF_Err_NONE;
  for (std::int32_t i = 0; i < frame.flakeCount; ++i) {
    FlakeSegment segment;
    if (!NextFlake(frame, streams, segment)) {
      continue;
    }
    const ShadedFlake<T> flake = ShadeFlake(frame, segment, streams.illumination, status);
    DrawDroppyMB<T>(frame.inData, &frame.scale, flake.size, segment.start, segment.end, flake.color,
                    frame.output, flake.transfer);
    if (i % kProgressInterval == 1) {
      status = frame.inData->inter.progress(frame.inData->effect_ref, i, frame.flakeCount);
      if (status != PF_Err_NONE) {
        break;
      }
    }
  }
  return status;
}

template PF_Err DrawFlakesPlainly(const FrameSetup<PF_Pixel>&);
template PF_Err DrawFlakesPlainly(const FrameSetup<PF_Pixel16>&);
template PF_Err DrawFlakesPlainly(const FrameSetup<PF_PixelFloat>&);
