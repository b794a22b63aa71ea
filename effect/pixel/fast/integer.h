// Truncation on lanes: without branches, so that a loop over them becomes vectors.
#pragma once

#include <cstdint>

#include "effect/pixel/fast/cpu_path.h"

/// The value where 32 bits hold it truncated, or 0, for values that are not below the least of 32 bits.  Not
/// a number is 0.
VINTREL_INLINE float BelowInt32End(float value) {
  return value < 2147483648.0f ? value : 0.0f;
}

/// The value where 32 bits hold it truncated, or 0.
VINTREL_INLINE float InsideInt32(float value) {
  return BelowInt32End(value >= -2147483648.0f ? value : 0.0f);
}
VINTREL_INLINE double InsideInt32(double value) {
  const double aboveLeast = value > -2147483649.0 ? value : 0.0;
  return aboveLeast < 2147483648.0 ? aboveLeast : 0.0;
}

/// TruncateToInt32 of either precision.
template <class Real>
VINTREL_INLINE std::int32_t TruncateLane(Real value) {
  return static_cast<std::int32_t>(InsideInt32(value));
}
