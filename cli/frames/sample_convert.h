// One channel of one pixel, from one way of counting to another: exact at black and white, nearest between.
//
// Files of 16 bits count to 65535, the effect to 32768.  Every value of the effect survives the way into a
// file and back: n * 65535 / 32768 is less than a half off when rounded, which is a quarter of a step of the
// effect's on the way back.  In the same way every 8-bit value survives 16 bits of either kind and float.
#pragma once

#include <cstdint>
#include <type_traits>

#include "hostapi/worlds.h"

namespace cli {

/// Ways of counting: the type of a sample, and the value of white and opaque.
struct To255 {
  using Sample = std::uint8_t;
  static constexpr std::uint32_t kWhite = 255;
};
struct To32768 {
  using Sample = std::uint16_t;
  static constexpr std::uint32_t kWhite = 32768;
};
struct To65535 {
  using Sample = std::uint16_t;
  static constexpr std::uint32_t kWhite = 65535;
};
struct ToOne {
  using Sample = float;
};

/// How the channels of a pixel type count.
template <class Pixel>
using WayOf = std::conditional_t<std::is_same_v<Pixel, PF_Pixel>, To255,
                                 std::conditional_t<std::is_same_v<Pixel, PF_Pixel16>, To32768, ToOne>>;

template <class Way>
inline constexpr bool kIsFloat = std::is_same_v<Way, ToOne>;

/// Between whole numbers: round(value * white / white), halves up; values above white count as white.
/// From float: round(value * white), halves up, clamped to 0..white, NaN to 0.
/// To float: value / white, correctly rounded; float to float is left alone, NaN and over-range included.
template <class To, class From>
constexpr typename To::Sample ConvertSample(typename From::Sample value) noexcept {
  if constexpr (std::is_same_v<To, From> && kIsFloat<To>) {
    return value;
  } else if constexpr (kIsFloat<To>) {
    return static_cast<float>(value) / static_cast<float>(From::kWhite);
  } else if constexpr (kIsFloat<From>) {
    if (!(value > 0)) {
      return 0;
    }
    if (value >= 1) {
      return static_cast<typename To::Sample>(To::kWhite);
    }
    // The product is exact in double precision, so the rounding is too.
    return static_cast<typename To::Sample>(static_cast<double>(value) * To::kWhite + 0.5);
  } else {
    const std::uint64_t within = value < From::kWhite ? value : From::kWhite;
    return static_cast<typename To::Sample>((within * To::kWhite * 2 + From::kWhite) / (From::kWhite * 2));
  }
}

}  // namespace cli
