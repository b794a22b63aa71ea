// Filling and copying rectangles of pixels, scaling where the sizes differ.
#pragma once

#include "hostapi/types.h"
#include "hostapi/worlds.h"
#include "minihost/picture/image.h"

namespace minihost {

/// The overlap of two rectangles; every empty overlap is {0, 0, 0, 0}.
PF_LRect Intersection(const PF_LRect& a, const PF_LRect& b) noexcept;

/// The whole of a world.
inline PF_LRect BoundsOf(const PF_LayerDef& world) noexcept {
  return {0, 0, world.width, world.height};
}

/// Sets the part of `rect` that lies in `world` to `color`, widened to `depth`: a channel of 255 becomes
/// exactly 32768 or 1.0.
void FillPixels(const PF_Pixel& color, const PF_LRect& rect, const PF_LayerDef& world, Depth depth) noexcept;

/// Copies `srcRect` of `src` onto `dstRect` of `dst`; both worlds are of `depth`.
///
/// Rectangles of one size: pixels are copied byte for byte, where both the source and the target pixel exist;
/// the worlds may share memory.  Rectangles of different sizes: see ReducePixels; the worlds may not share
/// memory.  An empty rectangle copies nothing.  Pixels outside the target rectangle and padding are not
/// touched.  Throws std::bad_alloc.
void CopyPixels(const PF_LayerDef& src, const PF_LRect& srcRect, const PF_LayerDef& dst,
                const PF_LRect& dstRect, Depth depth);

/// Makes each target pixel the average of the source area under it.
///
/// The source rectangle is stretched onto the target rectangle.  A source pixel weighs as much as the target
/// pixel covers of it, exactly.  Alpha is the weighted mean of the alphas.  Colour is the mean weighted by
/// alpha too, so that what hides under transparent pixels does not show; where all is transparent the result
/// is transparent black.  Integer depths round to the nearest value.  Source pixels outside of `src` do not
/// count; a target pixel with none under it is left alone.  Alphas below 0 weigh nothing in colours.
///
/// Where the target is larger, this yields enlarged pixels with exact blends where two meet in one.
void ReducePixels(const PF_LayerDef& src, const PF_LRect& srcRect, const PF_LayerDef& dst,
                  const PF_LRect& dstRect, Depth depth);

/// All of `source` scaled onto a new image of this size.
Image Resized(const Image& source, int width, int height);

}  // namespace minihost
