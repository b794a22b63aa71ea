#include "effect/render/frame/light.h"

#include "effect/render/frame/light_scale.h"

namespace {

std::int32_t ReducedExtent(std::int32_t extent) {
  constexpr std::int32_t kLeast = 2;
  const std::int32_t reduced = extent / kLightReduction;
  return reduced < kLeast ? kLeast : reduced;
}

}  // namespace

PF_Err PrepareIllumination(Fxenv& env, FrameField& frame, FX_NewWorld& copy) {
  frame.illumWorld = env.input;
  if (!(frame.influence > 0.0f)) {
    return PF_Err_NONE;
  }
  // The copy below overwrites every pixel, so the world is not cleared.
  constexpr bool kClear = false;
  if (const PF_Err error = copy.New(ReducedExtent(env.input->width), ReducedExtent(env.input->height),
                                    env.PixelFormat(), kClear);
      error != PF_Err_NONE) {
    return error;
  }
  if (copy.Layer() == nullptr) {
    return PF_Err_OUT_OF_MEMORY;
  }
  frame.illumWorld = copy.Layer();
  return env.inData->utils->copy(env.inData->effect_ref, env.input, frame.illumWorld, nullptr, nullptr);
}
