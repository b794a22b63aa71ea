// The reduced copy of the layer that lights the flakes.
#pragma once

#include "effect/host/fxenv.h"
#include "effect/host/new_world.h"
#include "effect/render/frame/record.h"

/// Points `frame.illumWorld` at a copy of the input, a tenth of its size and at least 2 x 2, which `copy`
/// owns; at the input itself when the light has no influence.  Returns the host's status; on failure nothing
/// is held.
PF_Err PrepareIllumination(Fxenv& env, FrameField& frame, FX_NewWorld& copy);
