// One pixel at a position between pixels.
#pragma once

#include "hostapi/types.h"
#include "hostapi/worlds.h"

namespace minihost {

/// Positions are 16.16; whole numbers fall on pixel centres.  Outside the world the border pixel counts.
/// `src` has at least one pixel, of type `P`.
template <class P>
P SampleNearest(const PF_LayerDef& src, PF_Fixed x, PF_Fixed y) noexcept;

/// Bilinear between the four pixels around the position; on a whole position exactly that pixel.
///
/// With weights w of the four pixels (adding up to 1), alpha is sum(w * alpha) and colour is
/// sum(w * alpha * colour) / sum(w * alpha), so that what hides under transparent pixels does not show.
/// Where the four alphas are equal, or sum(w * alpha) is 0, colour is sum(w * colour).  Alphas below 0 weigh
/// nothing in colours.  Integer depths round to the nearest value.
template <class P>
P SampleBilinear(const PF_LayerDef& src, PF_Fixed x, PF_Fixed y) noexcept;

extern template PF_Pixel SampleNearest<PF_Pixel>(const PF_LayerDef&, PF_Fixed, PF_Fixed) noexcept;
extern template PF_Pixel16 SampleNearest<PF_Pixel16>(const PF_LayerDef&, PF_Fixed, PF_Fixed) noexcept;
extern template PF_PixelFloat SampleNearest<PF_PixelFloat>(const PF_LayerDef&, PF_Fixed, PF_Fixed) noexcept;
extern template PF_Pixel SampleBilinear<PF_Pixel>(const PF_LayerDef&, PF_Fixed, PF_Fixed) noexcept;
extern template PF_Pixel16 SampleBilinear<PF_Pixel16>(const PF_LayerDef&, PF_Fixed, PF_Fixed) noexcept;
extern template PF_PixelFloat SampleBilinear<PF_PixelFloat>(const PF_LayerDef&, PF_Fixed, PF_Fixed) noexcept;

}  // namespace minihost
