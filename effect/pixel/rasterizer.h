// The flake rasterizer: a soft disc swept along a straight path.
#pragma once

#include "effect/pixel/transfer.h"
#include "effect/render/frame/scale.h"
#include "hostapi/commands.h"

/// A point in scene units, y growing downwards.
struct FloatPoint {
  float x;
  float y;
};

/// Draws one flake of radius `size` (scene units) that moves from `p0` to `p1` during the exposure.
///
/// Every pixel of `dest` closer to the path than the radius gets `color` through `transfer`, with its alpha
/// scaled by 1 - (distance / radius)^2.  Points are in scene units from the first pixel of `dest`, where
/// pixel (c, r) is judged at (c * xScaleInvF, r * yScaleInvF): its corner, without half a pixel's offset.
/// Pixels are visited by rows from the top, columns left to right.
///
/// A flake smaller than one unit is drawn at radius 1 with its alpha reduced in proportion.  A path that
/// rises or falls by less than 0.1 ends 0.1 below its start.  Sizes or coordinates that are not finite, or
/// that leave 31 bits when converted to pixels, draw nothing; so do a negative size and an empty `dest`.
///
/// `in_data` lends its square root.  Single precision throughout, apart from that root.
template <class T>
void DrawDroppyMB(const PF_InData* in_data, const FX_PARc* scale, float size, FloatPoint p0, FloatPoint p1,
                  T color, PF_LayerDef* dest, TransferFunc<T> transfer);

extern template void DrawDroppyMB<PF_Pixel>(const PF_InData*, const FX_PARc*, float, FloatPoint, FloatPoint,
                                            PF_Pixel, PF_LayerDef*, TransferFunc<PF_Pixel>);
extern template void DrawDroppyMB<PF_Pixel16>(const PF_InData*, const FX_PARc*, float, FloatPoint, FloatPoint,
                                              PF_Pixel16, PF_LayerDef*, TransferFunc<PF_Pixel16>);
extern template void DrawDroppyMB<PF_PixelFloat>(const PF_InData*, const FX_PARc*, float, FloatPoint,
                                                 FloatPoint, PF_PixelFloat, PF_LayerDef*,
                                                 TransferFunc<PF_PixelFloat>);
