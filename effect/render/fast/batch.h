// A batch of flakes, one lane each.
#pragma once

#include <cstddef>
#include <cstdint>

#include "effect/pixel/fast/lanes.h"
#include "effect/pixel/fast/stroke_terms.h"

/// What FlakeSegment is for one flake, and the radius that shading adds.  Lanes outside the range hold flakes
/// that do not exist, with values of no meaning.
struct FlakeBatch {
  std::size_t first;  // lanes first to last - 1 hold flakes
  std::size_t last;

  StrokeBatch stroke;  // the paths; sizes are set by shading, below 0 where nothing is drawn
  Lanes<double> depth;
  Lanes<double> scale;
  Lanes<float> wiggle;
  Lanes<std::int32_t> sizeDraw;
  Lanes<double> drawn;  // 0 below the ground, otherwise 1; as wide as what is compared, for vectors
};
