// The two-step render protocol, and the choice of the render pass by pixel format.
#pragma once

#include "effect/host/fxenv.h"
#include "hostapi/commands.h"
#include "hostapi/smart_render.h"

/// Asks for the input over exactly the requested rectangle, reports the rectangles that the render will
/// produce (neither widened for flakes that enter from outside), and leaves a PreRenderGeometry in
/// `pre_render_data`.  Returns the check-out's status, and leaves nothing there when it failed; without
/// memory for the geometry the render step fails.
PF_Err PreRender(PF_InData* in_data, PF_OutData* out_data, PF_PreRenderExtra* extra);

/// Grows `dst` to cover `src`.  An empty `dst` becomes a copy of `src`, even of an empty one.
void UnionLRect(const PF_LRect* src, PF_LRect* dst);

/// Checks out the worlds, completes `env` and renders.  A failed check-out is returned; missing or empty
/// worlds render nothing and return 0.  The host takes the worlds back when the command ends.
PF_Err SmartRender(Fxenv& env, PF_SmartRenderExtra* extra);

/// Runs the render pass for the output's pixel format; PF_Err_BAD_CALLBACK_PARAM for any other.
PF_Err RenderSmart(Fxenv& env);
