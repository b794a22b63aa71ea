// One colour channel of a flake under background illumination.
#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "effect/pixel/integer.h"
#include "effect/pixel/pixel_type.h"

/// The channel moved towards the sampled light by `weight`, 0..1, in single precision; truncated to whole
/// steps in the integer depths.  A weight beyond 1 would move it out of the depth's range, which the
/// operators rely on: there it ends at the range's end.
template <class T, class Channel>
Channel LitChannel(Channel sampled, Channel own, float weight) {
  if constexpr (std::is_floating_point_v<Channel>) {
    return own + weight * (sampled - own);
  } else {
    const float lit = static_cast<float>(sampled - own) * weight + static_cast<float>(own);
    const std::int32_t whole = TruncateToInt32(static_cast<double>(lit));
    return static_cast<Channel>(std::clamp(whole, 0, PixelType<T>::kWhite));
  }
}

/// The flake's pixel lit by a sample of the picture; its alpha stays.
template <class T>
T LitPixel(T flake, const T& light, float influenceScale) {
  const float weight = static_cast<float>(light.alpha) * influenceScale;
  flake.red = LitChannel<T>(light.red, flake.red, weight);
  flake.green = LitChannel<T>(light.green, flake.green, weight);
  flake.blue = LitChannel<T>(light.blue, flake.blue, weight);
  return flake;
}
