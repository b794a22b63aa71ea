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

/// A way of counting: the type of a sample, and the value of white and opaque.
template <class Whole, std::uint32_t white>
struct CountTo {
  using Sample = Whole;
  static constexpr std::uint32_t kWhite = white;
};
using To255 = CountTo<std::uint8_t, 255>;
using To32768 = CountTo<std::uint16_t, 32768>;
using To65535 = CountTo<std::uint16_t, 65535>;
struct ToOne {
  using Sample = float;
};

/// How the channels of a pixel type count.
template <class Pixel>
using WayOf = std::conditional_t<std::is_same_v<Pixel, PF_Pixel>, To255,
                                 std::conditional_t<std::is_same_v<Pixel, PF_Pixel16>, To32768, ToOne>>;

template <class Way>
inline constexpr bool kIsFloat = std::is_same_v<Way, ToOne>;

/// The sample that is this fraction of white.  Whole numbers: round(fraction * white), halves up, clamped to
/// 0..white, NaN to 0.  Float: the nearest one, NaN and over-range included.
template <class Way>
constexpr typename Way::Sample FromFraction(double fraction) noexcept {
  if constexpr (kIsFloat<Way>) {
    return static_cast<float>(fraction);
  } else {
    if (!(fraction > 0)) {
      return 0;
    }
    return static_cast<typename Way::Sample>((fraction < 1 ? fraction : 1.0) * Way::kWhite + 0.5);
  }
}

/// Between whole numbers: round(value * white / white), halves up; values above white count as white.
/// From float: FromFraction, exactly, since the product fits double precision.
/// To float: value / white, correctly rounded; float to float is left alone, NaN and over-range included.
template <class To, class From>
constexpr typename To::Sample ConvertSample(typename From::Sample value) noexcept {
  if constexpr (std::is_same_v<To, From> && kIsFloat<To>) {
    return value;
  } else if constexpr (kIsFloat<To>) {
    return static_cast<float>(value) / static_cast<float>(From::kWhite);
  } else if constexpr (kIsFloat<From>) {
    return FromFraction<To>(static_cast<double>(value));
  } else {
    const std::uint64_t within = value < From::kWhite ? value : From::kWhite;
    return static_cast<typename To::Sample>((within * To::kWhite * 2 + From::kWhite) / (From::kWhite * 2));
  }
}

}  // namespace cli
