#include "effect/render/render_pass.h"

#include "effect/render/draw_flakes.h"
#include "effect/render/frame/setup.h"

template <class T>
PF_Err RenderThisSmart(Fxenv& env) {
  FX_NewWorld light(env);
  FrameSetup<T> frame = {{.scale = FX_PARc(env.inData), .inData = env.inData}};
  const std::optional<PF_Err> ended = SetUpFrame(env, light, frame);
  return ended ? *ended : DrawFlakes(frame);
}

template PF_Err RenderThisSmart<PF_Pixel>(Fxenv&);
template PF_Err RenderThisSmart<PF_Pixel16>(Fxenv&);
template PF_Err RenderThisSmart<PF_PixelFloat>(Fxenv&);
