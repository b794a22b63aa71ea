// All four channels of a pixel at once, in double precision.
//
// Two doubles to a vector is what every 64-bit processor has.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "hostapi/types.h"
#include "hostapi/worlds.h"

namespace minihost {

using Doubles = double __attribute__((vector_size(16)));
struct WideChannels {
  Doubles alphaRed;
  Doubles greenBlue;
};

using Bytes = std::uint8_t __attribute__((vector_size(16)));
using Words = std::uint16_t __attribute__((vector_size(16)));
using Integers = std::uint32_t __attribute__((vector_size(16)));
using LongIntegers = std::uint64_t __attribute__((vector_size(16)));
static_assert(std::endian::native == std::endian::little, "vectors are widened by zeros behind their values");

/// The first eight bytes, each as 16 bits; the first four words, each as 32.
inline Words Widen(Bytes bytes) noexcept {
  return reinterpret_cast<Words>(
      __builtin_shufflevector(bytes, Bytes{}, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
}
inline Integers WidenLow(Words words) noexcept {
  return reinterpret_cast<Integers>(__builtin_shufflevector(words, Words{}, 0, 8, 1, 9, 2, 10, 3, 11));
}
inline Integers WidenHigh(Words words) noexcept {
  return reinterpret_cast<Integers>(__builtin_shufflevector(words, Words{}, 4, 8, 5, 9, 6, 10, 7, 11));
}

/// A whole number below 2^32 in the low half of a double's bits, under the high half of 2^52, is the double
/// 2^52 plus that number.
inline WideChannels Widen(Integers channels) noexcept {
  const Integers high = {0x43300000, 0x43300000, 0x43300000, 0x43300000};
  return {reinterpret_cast<Doubles>(__builtin_shufflevector(channels, high, 0, 4, 1, 5)) - 0x1p52,
          reinterpret_cast<Doubles>(__builtin_shufflevector(channels, high, 2, 6, 3, 7)) - 0x1p52};
}

// Pixels are loaded as integers: bytes copied into a part of a vector would go through memory.
inline WideChannels Widen(const PF_Pixel& pixel) noexcept {
  std::uint32_t bits;
  std::memcpy(&bits, &pixel, sizeof bits);
  return Widen(WidenLow(Widen(reinterpret_cast<Bytes>(Integers{bits, 0, 0, 0}))));
}
inline WideChannels Widen(const PF_Pixel16& pixel) noexcept {
  std::uint64_t bits;
  std::memcpy(&bits, &pixel, sizeof bits);
  return Widen(WidenLow(reinterpret_cast<Words>(LongIntegers{bits, 0})));
}
inline WideChannels Widen(const PF_PixelFloat& pixel) noexcept {
  return {Doubles{pixel.alpha, pixel.red}, Doubles{pixel.green, pixel.blue}};
}

}  // namespace minihost
