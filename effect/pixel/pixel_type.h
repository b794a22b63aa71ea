// What differs between the three pixel types apart from the operators themselves.
#pragma once

#include <cstdint>

#include "hostapi/worlds.h"

template <class T>
struct PixelType;

template <>
struct PixelType<PF_Pixel> {
  using Channel = std::uint8_t;
  static constexpr std::int32_t kWhite = 255;
};

template <>
struct PixelType<PF_Pixel16> {
  using Channel = std::uint16_t;
  static constexpr std::int32_t kWhite = 32768;
};

template <>
struct PixelType<PF_PixelFloat> {
  using Channel = float;
  static constexpr float kWhite = 1.0f;
};
