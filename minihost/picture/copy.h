// Filling and copying rectangles of pixels, scaling where the sizes differ.
#pragma once

#include "hostapi/types.h"
#include "hostapi/worlds.h"
#include "minihost/picture/image.h"
#include "minihost/picture/world.h"

namespace minihost {

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

/// All of `source`, which is not empty, scaled onto a new image of this size and of its depth.  Throws as
/// Image does.
Image Resized(const Image& source, int width, int height);

}  // namespace minihost
