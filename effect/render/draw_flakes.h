// The flake loop: every flake of a filled record, in index order, into the record's output.
#pragma once

#include "effect/render/frame/record.h"

/// Draws the frame.  After the flakes 1, 129, 257, … that are drawn it reports progress, and ends at once
/// when the host answers with an interruption; the flakes up to then stay in the picture.  Returns the result
/// of the last sample or progress call, or 0 when there was none.
///
/// Takes the fast loop where CanDrawFast, on the widest CPU path of the machine, and the plain one elsewhere
/// and without memory for the fast one.
template <class T>
PF_Err DrawFlakes(const FrameSetup<T>& frame);

extern template PF_Err DrawFlakes(const FrameSetup<PF_Pixel>&);
extern template PF_Err DrawFlakes(const FrameSetup<PF_Pixel16>&);
extern template PF_Err DrawFlakes(const FrameSetup<PF_PixelFloat>&);
