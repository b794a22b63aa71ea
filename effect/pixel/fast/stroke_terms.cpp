#include "effect/pixel/fast/stroke_terms.h"

#include <cmath>

#include "effect/pixel/stroke_limits.h"

namespace {

constexpr float kNearest = 1 << 15;  // of coordinates in scene units small enough for kReachMargin

VINTREL_INLINE float Lesser(float a, float b) {
  return b < a ? b : a;
}
VINTREL_INLINE float Greater(float a, float b) {
  return a < b ? b : a;
}
VINTREL_INLINE std::int32_t Clamp(std::int32_t v, std::int32_t last) {
  const std::int32_t notNegative = v < 0 ? 0 : v;
  return notNegative > last ? last : notNegative;
}

struct PixelRange {
  std::int32_t first;
  std::int32_t last;
};

// The columns (rows) to look at for the span from `low` to `high`: DrawDroppyMB's box, and inside it the
// reach.
VINTREL_INLINE PixelRange LookRange(float low, float high, float reach, std::int32_t extent, bool fits,
                                    bool near) {
  const std::int32_t margin = static_cast<std::int32_t>(fits ? reach : 0.0f) + 1;
  const std::int32_t boxFirst = Clamp(static_cast<std::int32_t>(fits ? low : 0.0f) - margin, extent - 1);
  const std::int32_t boxLast = Clamp(static_cast<std::int32_t>(fits ? high : 0.0f) + margin, extent - 1);
  const float reachLow = near ? low - reach - kReachMargin : 0.0f;
  const float reachHigh = near ? high + reach + kReachMargin : static_cast<float>(extent);
  // Rounded towards the span.
  const std::int32_t reachFirst = static_cast<std::int32_t>(reachLow) + (reachLow > 0.0f ? 1 : 0);
  const std::int32_t reachLast = static_cast<std::int32_t>(reachHigh) - (reachHigh < 0.0f ? 1 : 0);
  return {(near & (reachFirst > boxFirst)) ? reachFirst : boxFirst,
          (near & (reachLast < boxLast)) ? reachLast : boxLast};
}

VINTREL_INLINE void SetTerms(const StrokeBatch& strokes, float peakAlpha, const FX_PARc& scale,
                             std::int32_t width, std::int32_t height, StrokeTerms& terms) {
  const float sx = scale.xScaleF;
  const float sy = scale.yScaleF;
  const bool usualScale = sx >= 0x1p-6f && sx <= 2.0f && sy >= 0x1p-6f && sy <= 2.0f &&
                          static_cast<float>(width) * scale.xScaleInvF < kNearest &&
                          static_cast<float>(height) * scale.yScaleInvF < kNearest;
  const float nearest = usualScale ? kNearest : 0.0f;
  for (std::size_t i = 0; i < kLanes; ++i) {
    const float x0 = strokes.startX[i];
    const float y0 = strokes.startY[i];
    const float x1 = strokes.endX[i];
    const bool small = strokes.size[i] < 1.0f;
    const float size = small ? 1.0f : strokes.size[i];
    terms.peakAlpha[i] = peakAlpha * (small ? strokes.size[i] : 1.0f);

    const float dx = x1 - x0;
    const float fall = strokes.endY[i] - y0;
    const bool level = (-kLeastFall < fall) & (fall < kLeastFall);
    const float dy = level ? kLeastFall : fall;
    const float y1 = level ? y0 + kLeastFall : strokes.endY[i];

    // The root of a float, taken in double precision and rounded back, is the correctly rounded root in
    // single precision: 53 bits are more than twice 24 and two.
    const float length = std::sqrt(dx * dx + dy * dy);
    const float gain = 1.0f / (length * size);
    const float normalX = -dy * gain;
    const float normalY = dx * gain;
    terms.normalX[i] = normalX;
    terms.normalY[i] = normalY;
    terms.pathLength[i] = length / size;
    terms.acrossOffset[i] = -(x1 * normalX + y1 * normalY);
    terms.alongOffset[i] = x1 * normalY - y1 * normalX;

    const float left = Lesser(x0 * sx, x1 * sx);
    const float right = Greater(x0 * sx, x1 * sx);
    const float top = Lesser(y0 * sy, y1 * sy);
    const float bottom = Greater(y0 * sy, y1 * sy);
    const float reachX = size * sx;
    const float reachY = size * sy;
    const bool fits = (left > -kLargestCoordinate) & (right < kLargestCoordinate) &
                      (top > -kLargestCoordinate) & (bottom < kLargestCoordinate) &
                      (reachX > -kLargestCoordinate) & (reachX < kLargestCoordinate) &
                      (reachY > -kLargestCoordinate) & (reachY < kLargestCoordinate) &
                      (strokes.size[i] >= 0.0f) & (gain > 0.0f);
    const float farthestX = Greater(std::fabs(x0), std::fabs(x1));
    const float farthestY = Greater(std::fabs(y0), std::fabs(y1));
    const bool near = fits & (farthestX < nearest) & (farthestY < nearest) & (size < nearest);
    const PixelRange columns = LookRange(left, right, reachX, width, fits, near);
    const PixelRange rows = LookRange(top, bottom, reachY, height, fits, near);
    terms.firstColumn[i] = columns.first;
    terms.lastColumn[i] = columns.last;
    terms.firstRow[i] = rows.first;
    terms.lastRow[i] = (fits & (columns.first <= columns.last)) ? rows.last : rows.first - 1;

    const float steepness = std::fabs(dy) * 4.0f;
    const bool steep = near & (steepness > length);
    terms.columnsPerAcross[i] = steep ? sx / normalX : 0.0f;
  }
}

}  // namespace

void SetStrokeTerms(const StrokeBatch& strokes, float peakAlpha, const FX_PARc& scale, std::int32_t width,
                    std::int32_t height, StrokeTerms& terms, CpuPath path) {
  RunOnPath<SetTerms>(path, strokes, peakAlpha, scale, width, height, terms);
}
