// The scale of the light: a reduced copy of the picture, sampled at 16.16 positions.
#pragma once

#include <cstdint>

/// Pixels of the picture to one of the copy, along each axis.
inline constexpr std::int32_t kLightReduction = 10;

/// From pixels of the picture to those of the copy.
inline constexpr float kLightScale = 0.1f;

/// One pixel of the copy in a sampler's position.
inline constexpr float kSampleUnit = 65536.0f;
