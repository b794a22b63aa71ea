// One colour channel of a flake under background illumination.
#pragma once

#include <type_traits>

#include "effect/pixel/integer.h"

/// The channel moved towards the sampled light by `weight`, 0..1, in single precision; truncated to whole
/// steps in the integer depths.
template <class Channel>
Channel LitChannel(Channel sampled, Channel own, float weight) {
  if constexpr (std::is_floating_point_v<Channel>) {
    return own + weight * (sampled - own);
  } else {
    const float lit = static_cast<float>(sampled - own) * weight + static_cast<float>(own);
    return static_cast<Channel>(TruncateToInt32(static_cast<double>(lit)));
  }
}

/// The flake's pixel lit by a sample of the picture; its alpha stays.
template <class T>
T LitPixel(T flake, const T& light, float influenceScale) {
  const float weight = static_cast<float>(light.alpha) * influenceScale;
  flake.red = LitChannel(light.red, flake.red, weight);
  flake.green = LitChannel(light.green, flake.green, weight);
  flake.blue = LitChannel(light.blue, flake.blue, weight);
  return flake;
}
