// The flakes' colour, operators and light, in the render's pixel type.
#pragma once

#include "effect/host/suite_cache.h"
#include "effect/render/frame/record.h"

/// Fills the fields of the record that depend on the pixel type, from Color and Opacity.  False when the
/// flakes are transparent and nothing needs drawing.
template <class T>
bool SetFlakeColor(FrameSetup<T>& frame, PF_Pixel color);

/// The host's sampler for pixels of type T.
template <class T>
SampleFunc<T> AcquireSampler(const AEGP_SuiteHandler& suites);
