// The rasterizer's per-flake terms by batches: what does not change along one flake.
#pragma once

#include <cstdint>

#include "effect/pixel/fast/cpu_path.h"
#include "effect/pixel/fast/lanes.h"
#include "effect/render/frame/scale.h"

/// Flakes to rasterize, as DrawDroppyMB takes them.  A size below 0 draws nothing.
struct StrokeBatch {
  Lanes<float> startX;
  Lanes<float> startY;
  Lanes<float> endX;
  Lanes<float> endY;
  Lanes<float> size;
};

/// The terms of each flake's distances, under the names that DrawDroppyMB gives them, and the pixels to look
/// at.
struct StrokeTerms {
  Lanes<float> normalX;
  Lanes<float> normalY;
  Lanes<float> acrossOffset;
  Lanes<float> alongOffset;
  Lanes<float> pathLength;
  Lanes<float> peakAlpha;  // less than the batch's for a flake smaller than one unit
  Lanes<float>
      columnsPerAcross;  // columns that `across` changes by 1 in; 0 where the path is too flat to use it
  Lanes<std::int32_t> firstColumn;
  Lanes<std::int32_t> lastColumn;
  Lanes<std::int32_t> firstRow;
  Lanes<std::int32_t> lastRow;  // before firstRow when no pixel can be covered
};

/// Sets every lane's terms for an image of `width` x `height` pixels, both above 0.  `peakAlpha` is that of
/// the flakes' pixel.
///
/// The pixels to look at are those of DrawDroppyMB's box, less what lies certainly beyond the flake's reach.
void SetStrokeTerms(const StrokeBatch& strokes, float peakAlpha, const FX_PARc& scale, std::int32_t width,
                    std::int32_t height, StrokeTerms& terms, CpuPath path);

/// How far a pixel may lie beyond the reach of a flake, as computed exactly, before it needs no look.  Where
/// the terms are used to leave out pixels, coordinates stay below 2^15 units and scales between 1/64 and 2,
/// so that the eight roundings of a distance (2^-24 each, of terms below 2^16 units) move it by less than
/// 1/16 of a pixel.
inline constexpr float kReachMargin = 0.25f;
