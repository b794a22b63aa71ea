// The two forms of the flake loop with a clock between their stages.
//
// Both read the clock once a stage and batch of 128 flakes, a fraction of a nanosecond a flake.  They draw
// what the loops draw, for frames whose flakes are all in front of the layer and above the ground.
#pragma once

#include <functional>

#include "effect/pixel/fast/coverage_list.h"
#include "effect/pixel/fast/cpu_path.h"
#include "effect/render/frame/record.h"

struct FastSeconds {
  double field = 0.0;
  double shading = 0.0;
  double terms = 0.0;
  double list = 0.0;
  double blend = 0.0;
};

struct PlainSeconds {
  double field = 0.0;
  double shading = 0.0;
  double drawing = 0.0;  // terms, coverage and blending
};

/// `look` sees each list before it is blended, off the clock.
template <class T>
FastSeconds DrawInStages(const FrameSetup<T>& frame, CpuPath path,
                         const std::function<void(const CoverageList<T>&)>& look = nullptr);

template <class T>
PlainSeconds DrawInStagesPlainly(const FrameSetup<T>& frame);
