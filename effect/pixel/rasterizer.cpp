#include "effect/pixel/rasterizer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "effect/pixel/pixel_type.h"
#include "effect/pixel/stroke_limits.h"

namespace {

// Inclusive range of columns or rows.
struct PixelRange {
  std::int32_t first;
  std::int32_t last;
};

// The columns (rows) within `reach` of the span between two coordinates, each bound clamped on its own, so
// that a span beyond an edge still names the edge column.  False when a bound leaves 32 bits or is not a
// number. Truncation goes towards zero on both sides of it; the reach's extra pixel makes up for that.
bool BoundingRange(float coordinate0, float coordinate1, float reach, std::int32_t extent,
                   PixelRange& range) {
  const auto fits = [](float value) { return value > -kLargestCoordinate && value < kLargestCoordinate; };
  if (!fits(coordinate0) || !fits(coordinate1) || !fits(reach)) {
    return false;
  }
  const std::int32_t margin = static_cast<std::int32_t>(reach) + 1;
  const std::int32_t first = static_cast<std::int32_t>(std::min(coordinate0, coordinate1)) - margin;
  const std::int32_t last = static_cast<std::int32_t>(std::max(coordinate0, coordinate1)) + margin;
  range = {std::clamp(first, 0, extent - 1), std::clamp(last, 0, extent - 1)};
  return true;
}

}  // namespace

template <class T>
void DrawDroppyMB(const PF_InData* in_data, const FX_PARc* scale, float size, FloatPoint p0, FloatPoint p1,
                  T color, PF_LayerDef* dest, TransferFunc<T> transfer) {
  if (dest->width <= 0 || dest->height <= 0 || size < 0.0f) {
    return;
  }
  float peakAlpha = static_cast<float>(color.alpha);
  if (size < 1.0f) {
    peakAlpha *= size;
    size = 1.0f;
  }

  const float dx = p1.x - p0.x;
  float dy = p1.y - p0.y;
  if (-kLeastFall < dy && dy < kLeastFall) {
    dy = kLeastFall;
    p1.y = p0.y + kLeastFall;
  }

  PixelRange columns;
  PixelRange rows;
  if (!BoundingRange(p0.x * scale->xScaleF, p1.x * scale->xScaleF, size * scale->xScaleF, dest->width,
                     columns) ||
      !BoundingRange(p0.y * scale->yScaleF, p1.y * scale->yScaleF, size * scale->yScaleF, dest->height,
                     rows)) {
    return;
  }

  // In units of the radius, with P = (X, Y):
  //   across = (dx (Y - p1.y) - dy (X - p1.x)) / (length size), the signed distance from the path's line;
  //   along = (dx (p1.x - X) + dy (p1.y - Y)) / (length size), how far P lies behind p1.
  const float length = static_cast<float>(in_data->utils->ansi.sqrt(static_cast<double>(dx * dx + dy * dy)));
  const float gain = 1.0f / (length * size);
  if (!(gain > 0.0f)) {
    return;  // a path too long for its length to be a number
  }
  const float normalX = -dy * gain;
  const float normalY = dx * gain;
  const float pathLength = length / size;
  const float acrossOffset = -(p1.x * normalX + p1.y * normalY);
  const float alongOffset = p1.x * normalY - p1.y * normalX;

  std::byte* const data = static_cast<std::byte*>(dest->data);
  for (std::int32_t row = rows.first; row <= rows.last; ++row) {
    const float y = static_cast<float>(row) * scale->yScaleInvF;
    const float acrossRow = normalY * y + acrossOffset;
    const float alongRow = normalX * y + alongOffset;
    T* const pixels = reinterpret_cast<T*>(data + static_cast<std::ptrdiff_t>(row) * dest->rowbytes);
    for (std::int32_t column = columns.first; column <= columns.last; ++column) {
      const float x = static_cast<float>(column) * scale->xScaleInvF;
      const float across = normalX * x + acrossRow;
      // The comparisons are written so that a NaN, from terms too large to add, draws nothing.
      float distanceSquared = across * across;
      if (!(distanceSquared < 1.0f)) {
        continue;
      }
      const float along = alongRow - normalY * x;
      if (along < 0.0f || along > pathLength) {
        const float beyond = along < 0.0f ? along : along - pathLength;
        distanceSquared += beyond * beyond;
        if (!(distanceSquared < 1.0f)) {
          continue;
        }
      }
      color.alpha = static_cast<typename PixelType<T>::Channel>((1.0f - distanceSquared) * peakAlpha);
      transfer(&color, &pixels[column], pixels[column]);
    }
  }
}

template void DrawDroppyMB<PF_Pixel>(const PF_InData*, const FX_PARc*, float, FloatPoint, FloatPoint,
                                     PF_Pixel, PF_LayerDef*, TransferFunc<PF_Pixel>);
template void DrawDroppyMB<PF_Pixel16>(const PF_InData*, const FX_PARc*, float, FloatPoint, FloatPoint,
                                       PF_Pixel16, PF_LayerDef*, TransferFunc<PF_Pixel16>);
template void DrawDroppyMB<PF_PixelFloat>(const PF_InData*, const FX_PARc*, float, FloatPoint, FloatPoint,
                                          PF_PixelFloat, PF_LayerDef*, TransferFunc<PF_PixelFloat>);
