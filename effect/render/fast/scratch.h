// What the stages of the fast flake loop hand to each other.
#pragma once

#include "effect/pixel/fast/coverage_list.h"
#include "effect/pixel/fast/stroke_terms.h"
#include "effect/render/fast/batch.h"
#include "effect/render/fast/field.h"
#include "effect/render/fast/shading.h"

/// Some sixty kilobytes, more for images wider than 512 pixels; lives as long as the pass.  Throws
/// std::bad_alloc.
template <class T>
struct BatchScratch {
  explicit BatchScratch(const FrameSetup<T>& frame) : streams(frame), list(frame.output->width) {}

  BatchStreams streams;
  FlakeBatch batch;
  ShadedBatch<T> shaded;
  StrokeTerms terms;
  CoverageList<T> list;
};
