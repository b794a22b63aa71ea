#include "effect/host/new_world.h"

#include <utility>

PF_Err FX_NewWorld::New(int width, int height, PF_PixelFormat pixelFormat, bool clear) {
  if (const PF_Err error = Dispose(); error != PF_Err_NONE) {
    return error;
  }
  const PF_ProgPtr effect = env->inData->effect_ref;
  PF_Err error = PF_Err_NONE;
  if (pixelFormat == PF_PixelFormat_ARGB128) {
    error = env->suites.WorldSuite2()->PF_NewWorld(effect, width, height, clear ? 1 : 0, pixelFormat, &world);
  } else {
    const PF_NewWorldFlags flags = (clear ? PF_NewWorldFlag_CLEAR_PIXELS : 0) |
                                   (pixelFormat == PF_PixelFormat_ARGB64 ? PF_NewWorldFlag_DEEP_PIXELS : 0);
    error = env->suites.WorldSuite1()->new_world(effect, width, height, flags, &world);
  }
  if (error == PF_Err_NONE) {
    allocated = true;
    format = pixelFormat;
  } else {
    world = {};
  }
  return error;
}

FX_NewWorld::~FX_NewWorld() {
  try {
    Dispose();
  } catch (...) {  // the result does not count either
  }
}

PF_Err FX_NewWorld::Dispose() {
  if (!allocated) {
    return PF_Err_NONE;
  }
  allocated = false;
  PF_EffectWorld held = std::exchange(world, PF_EffectWorld{});
  const PF_ProgPtr effect = env->inData->effect_ref;
  return format == PF_PixelFormat_ARGB128 ? env->suites.WorldSuite2()->PF_DisposeWorld(effect, &held)
                                          : env->suites.WorldSuite1()->dispose_world(effect, &held);
}
