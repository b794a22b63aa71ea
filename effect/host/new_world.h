// One temporary image from the host.
#pragma once

#include "effect/host/fxenv.h"
#include "hostapi/worlds.h"

/// Owns at most one host world, given back by Dispose or on destruction.  Must not outlive its Fxenv.
class FX_NewWorld {
 public:
  explicit FX_NewWorld(Fxenv& environment) : env(&environment) {}
  /// As Dispose; what the host throws ends here.
  ~FX_NewWorld();
  FX_NewWorld(const FX_NewWorld&) = delete;
  FX_NewWorld& operator=(const FX_NewWorld&) = delete;

  /// Obtains a world of `width` x `height` pixels, giving back one already held first; `clear` asks for
  /// transparent black.  A format that is neither 16-bit nor float makes an 8-bit world.  Returns the host's
  /// status; on failure nothing is held.
  PF_Err New(int width, int height, PF_PixelFormat pixelFormat, bool clear);

  /// Null while nothing is held.
  PF_LayerDef* Layer() { return allocated && world.data != nullptr ? &world : nullptr; }

  /// Gives the world back and returns the host's status; 0 when nothing is held.  Nothing is held afterwards,
  /// whatever the host returns or throws.
  PF_Err Dispose();

 private:
  bool allocated = false;
  Fxenv* env;
  PF_EffectWorld world = {};                       // all zero while nothing is held
  PF_PixelFormat format = PF_PixelFormat_INVALID;  // of the last world obtained: decides who takes it back
};
