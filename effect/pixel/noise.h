// A seeded table of noise with a smooth lookup.
#pragma once

#include <cstdint>

#include "hostapi/types.h"

template <class Real>
struct NoiseValues;

/// 1024 pseudo-random values in [-1, 1], read between the entries through a uniform cubic B-spline.
///
/// A plain value, empty at first.  NoiseTableLin fills it (and allocates it where Allocate has not);
/// noisebspline may then be called any number of times.  The table is released with the object.
template <>
struct NoiseValues<float> {
  static constexpr std::int32_t kEntries = 1024;

  NoiseValues() = default;
  NoiseValues(const NoiseValues&) = delete;
  NoiseValues& operator=(const NoiseValues&) = delete;
  ~NoiseValues();

  /// A new table with undefined contents in place of the old one; the size is kEntries whatever `count`.
  /// PF_Err_OUT_OF_MEMORY leaves the object empty.
  PF_Err Allocate(std::uint32_t count);

  /// Fills the table.  Each entry blends the values that the neighbouring keys seed - step, seed, seed + step
  /// and seed + 2 step give there, at a place that a fifth stream scatters and `phase` shifts.  With a
  /// `period` other than 0 the keys repeat after `period` steps.  Returns the error of Allocate, or 0.
  PF_Err NoiseTableLin(std::int32_t seed, std::int32_t step, float phase, std::uint32_t period);

  /// Noise at `x`, in [-1, 1] up to rounding, with continuous first and second derivatives.  Only on a filled
  /// table.  An `x` beyond 32 bits or not a number reads a fixed place of the table.
  float noisebspline(float x) const;

  float* table = nullptr;       // kEntries values, owned; null before the first allocation
  std::int32_t seedOffset = 0;  // added to the start state of each key's stream
};
