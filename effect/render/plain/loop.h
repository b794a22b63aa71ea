// The flake loop, flake by flake: the meaning of the fast one.
#pragma once

#include "effect/render/frame/record.h"

/// DrawFlakes for any record.  The three loops declare their three depths alike, each for itself.
template <class T>
PF_Err DrawFlakesPlainly(const FrameSetup<T>& frame);

extern template PF_Err DrawFlakesPlainly(const FrameSetup<PF_Pixel>&);
extern template PF_Err DrawFlakesPlainly(const FrameSetup<PF_Pixel16>&);
extern template PF_Err DrawFlakesPlainly(const FrameSetup<PF_PixelFloat>&);
