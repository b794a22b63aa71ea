// What the output shows before any flake.
#pragma once

#include "effect/host/fxenv.h"
#include "effect/render/frame/record.h"

/// Creates the instance's record where there is none.  When that fails the output is cleared, and the
/// statuses of both are returned in one.
PF_Err EnsureSequenceState(const Fxenv& env);

/// Copies the layer to the shown part of the output; without "Composite With Original" clears the output, and
/// sets `embedDepth` to the whole depth, as there is nothing for flakes to go behind.
PF_Err PrepareBackground(const Fxenv& env, FrameField& frame);
