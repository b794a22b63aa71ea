// One frame, from the host's records to finished pixels.
#pragma once

#include "effect/host/fxenv.h"

/// Renders into `env.output`, whose pixels are of type T.  Returns 0 or the status that ended the pass:
///   PF_Err_OUT_OF_MEMORY, output untouched, when a smart render comes without its geometry;
///   517, output transparent black, when the instance's record cannot be created;
///   the host's own status of a failed copy, fill, abort check, temporary world, sample or progress call.
/// With nothing to draw it returns 0 after preparing the background.  `pre_render_data` is consumed.
template <class T>
PF_Err RenderThisSmart(Fxenv& env);

extern template PF_Err RenderThisSmart<PF_Pixel>(Fxenv&);
extern template PF_Err RenderThisSmart<PF_Pixel16>(Fxenv&);
extern template PF_Err RenderThisSmart<PF_PixelFloat>(Fxenv&);
