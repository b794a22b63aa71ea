// ConvertSample for rows of video, with arithmetic that the compiler makes vectors of.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "cli/frames/sample_convert.h"
#include "cli/video/module/rgb.h"

namespace cli {

/// The same as ConvertSample, without the arithmetic where nothing changes, and in 16 or 32 bits where they
/// suffice.
template <class To, class From>
constexpr typename To::Sample FastConvert(typename From::Sample value) noexcept {
  using Sample = typename To::Sample;
  if constexpr (std::is_same_v<To, From> && std::is_same_v<To, To255>) {
    return value;
  } else if constexpr (std::is_same_v<From, To32768> && std::is_same_v<To, To65280>) {
    // value * 65280 / 32768 is twice the value less a 128th of it.
    const std::uint16_t within = value < From::kWhite ? value : std::uint16_t{From::kWhite};
    const auto rounded = static_cast<std::uint16_t>(within + 63);
    return static_cast<Sample>(within * 2 - (rounded >> 7));
  } else if constexpr (std::is_same_v<From, To32768> && std::is_same_v<To, To65535>) {
    // Less a 32768th of it, which is 0 or 1 when rounded.
    const std::uint16_t within = value < From::kWhite ? value : std::uint16_t{From::kWhite};
    return static_cast<Sample>(within * 2 - (within > From::kWhite / 2 ? 1 : 0));
  } else if constexpr (std::is_same_v<From, To65280> && std::is_same_v<To, To32768>) {
    // Half of value * 256 / 255.
    const std::uint16_t within = value < From::kWhite ? value : std::uint16_t{From::kWhite};
    return static_cast<Sample>((within + within / 255 + 1) >> 1);
  } else if constexpr (kIsFloat<From> && !kIsFloat<To>) {
    const double above = value > 0 ? value : 0;  // and NaN is 0
    return static_cast<Sample>(static_cast<std::int32_t>((above < 1 ? above : 1) * To::kWhite + 0.5));
  } else if constexpr (!kIsFloat<To> && !kIsFloat<From>) {
    constexpr std::uint64_t kMost = std::uint64_t{From::kWhite} * To::kWhite * 2 + From::kWhite;
    if constexpr (kMost <= UINT32_MAX) {
      const std::uint32_t within = value < From::kWhite ? value : From::kWhite;
      return static_cast<Sample>((within * (To::kWhite * 2) + From::kWhite) / (From::kWhite * 2));
    }
  }
  return ConvertSample<To, From>(value);
}

/// The colours of `count` pixels in rows of their own.  Reading every fourth sample is slow without the
/// shuffles below.
inline void SplitColors(const PF_Pixel16* pixels, std::size_t count, std::uint16_t* __restrict red,
                        std::uint16_t* __restrict green, std::uint16_t* __restrict blue) {
  using Lanes = std::uint16_t __attribute__((vector_size(16)));
  constexpr std::size_t kLanes = 8;
  const auto low = [](Lanes a, Lanes b) { return __builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11); };
  const auto high = [](Lanes a, Lanes b) {
    return __builtin_shufflevector(a, b, 4, 12, 5, 13, 6, 14, 7, 15);
  };
  const auto front = [](Lanes a, Lanes b) { return __builtin_shufflevector(a, b, 0, 1, 2, 3, 8, 9, 10, 11); };
  const auto back = [](Lanes a, Lanes b) {
    return __builtin_shufflevector(a, b, 4, 5, 6, 7, 12, 13, 14, 15);
  };
  std::size_t x = 0;
  for (; x + kLanes <= count; x += kLanes) {
    Lanes pairs[4];  // of pixels, each alpha, red, green, blue
    std::memcpy(pairs, pixels + x, sizeof pairs);
    const Lanes even = low(pairs[0], pairs[1]);
    const Lanes odd = high(pairs[0], pairs[1]);
    const Lanes nextEven = low(pairs[2], pairs[3]);
    const Lanes nextOdd = high(pairs[2], pairs[3]);
    const Lanes reds = back(low(even, odd), low(nextEven, nextOdd));
    const Lanes greens = front(high(even, odd), high(nextEven, nextOdd));
    const Lanes blues = back(high(even, odd), high(nextEven, nextOdd));
    std::memcpy(red + x, &reds, sizeof reds);
    std::memcpy(green + x, &greens, sizeof greens);
    std::memcpy(blue + x, &blues, sizeof blues);
  }
  for (; x < count; ++x) {
    red[x] = pixels[x].red;
    green[x] = pixels[x].green;
    blue[x] = pixels[x].blue;
  }
}

}  // namespace cli
