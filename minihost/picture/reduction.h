// Scaling by exact area.
#pragma once

#include "hostapi/types.h"
#include "hostapi/worlds.h"
#include "minihost/picture/image.h"

namespace minihost {

/// Makes each target pixel the average of the source area under it.
///
/// The source rectangle is stretched onto the target rectangle.  A source pixel weighs as much as the target
/// pixel covers of it, exactly.  Alpha is the weighted mean of the alphas.  Colour is the mean weighted by
/// alpha too, so that what hides under transparent pixels does not show; where all is transparent the result
/// is transparent black.  Integer depths round to the nearest value.  Source pixels outside of `src` do not
/// count; a target pixel with none under it is left alone.  Alphas below 0 weigh nothing in colours.
///
/// Where the target is larger, this yields enlarged pixels with exact blends where two meet in one.  Throws
/// std::bad_alloc.
void ReducePixels(const PF_LayerDef& src, const PF_LRect& srcRect, const PF_LayerDef& dst,
                  const PF_LRect& dstRect, Depth depth);

}  // namespace minihost
