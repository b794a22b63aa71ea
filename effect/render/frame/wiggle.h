// The wiggle of all flakes: on or off, and in the units of its curve.
#pragma once

#include "effect/render/frame/record.h"

/// Sets `wiggleOn` from the amounts and the flatness, and takes `wigglePhase` and `phaseBlur` from cycles to
/// radians.  A stochastic wiggle gets its noise table from `wiggleSeed` instead, phases in units of the
/// table, and amounts to match.  PF_Err_OUT_OF_MEMORY without memory for the table.
PF_Err SetWiggle(FrameField& frame);
