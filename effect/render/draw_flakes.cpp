#include "effect/render/draw_flakes.h"

#include "effect/render/fast/loop.h"
#include "effect/render/plain/loop.h"

template <class T>
PF_Err DrawFlakes(const FrameSetup<T>& frame) {
  if (CanDrawFast(frame)) {
    if (const std::optional<PF_Err> status = DrawFlakesFast(frame, BestCpuPath())) {
      return *status;
    }
  }
  return DrawFlakesPlainly(frame);
}

template PF_Err DrawFlakes(const FrameSetup<PF_Pixel>&);
template PF_Err DrawFlakes(const FrameSetup<PF_Pixel16>&);
template PF_Err DrawFlakes(const FrameSetup<PF_PixelFloat>&);
