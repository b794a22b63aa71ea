// The flake loop: every flake of a filled record, in index order, into the record's output.
#pragma once

#include "effect/pixel/cpu_path.h"
#include "effect/render/frame_setup.h"

/// Draws the frame.  After the flakes 1, 129, 257, … that are drawn it reports progress, and ends at once
/// when the host answers with an interruption; the flakes up to then stay in the picture.  Returns the result
/// of the last sample or progress call, or 0 when there was none.
///
/// Takes the fast road where it serves, on the widest CPU path of the machine; throws std::bad_alloc without
/// memory for it.
template <class T>
PF_Err DrawFlakes(const FrameSetup<T>& frame);

/// The same, flake by flake: the meaning of the fast road.
template <class T>
PF_Err DrawFlakesPlainly(const FrameSetup<T>& frame);

/// The same, by batches: the calls of the host and the bits of the picture are those of the plain loop.  Only
/// for frames that FastRoadServes, on a path that the machine supports.
template <class T>
PF_Err DrawFlakesFast(const FrameSetup<T>& frame, CpuPath path);

/// Whether the frame's operators are the effect's own, its output's bytes can be counted in 32 bits, and the
/// processor is little-endian, as the packing of pixels into words expects.
template <class T>
bool FastRoadServes(const FrameSetup<T>& frame);
