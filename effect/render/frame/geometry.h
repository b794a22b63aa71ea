// The frame and its flake field in scene units.
#pragma once

#include "effect/host/fxenv.h"
#include "effect/render/frame/parameters.h"
#include "effect/render/frame/record.h"

/// Sets the frame's extent and origin: from the pre-render's record in a smart render, which is consumed and
/// its pointer nulled, from the output otherwise.  PF_Err_OUT_OF_MEMORY when a smart render has no such
/// record.
PF_Err SetFrameExtent(Fxenv& env, FrameField& frame);

/// Sets the flake field, offset, ground, embed distance and spread from the extent and the parameters.
void SetFieldGeometry(FrameField& frame, const ViewSamples& view);
