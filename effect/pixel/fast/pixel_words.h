// Pixels of 8 and 16 bits as words, so that a loop over many pixels has one lane for each.
//
// Memory order is alpha, red, green, blue; the words are read as little-endian.
#pragma once

#include <cstdint>
#include <cstring>

#include "effect/pixel/fast/cpu_path.h"
#include "hostapi/worlds.h"

/// One pixel as four integers.
struct WidePixel {
  std::int32_t alpha;
  std::int32_t red;
  std::int32_t green;
  std::int32_t blue;
};

/// Split and Join take a word apart and put it together; channels to join are in the range of their bits.
template <class T>
struct PixelWord;

template <>
struct PixelWord<PF_Pixel> {
  using Word = std::uint32_t;

  VINTREL_INLINE static WidePixel Split(Word word) {
    const auto channel = [word](int shift) __attribute__((always_inline)) {
      return static_cast<std::int32_t>((word >> shift) & 0xFFu);
    };
    return {channel(0), channel(8), channel(16), channel(24)};
  }
  VINTREL_INLINE static Word Join(const WidePixel& pixel) {
    return static_cast<Word>(pixel.alpha) | static_cast<Word>(pixel.red) << 8 |
           static_cast<Word>(pixel.green) << 16 | static_cast<Word>(pixel.blue) << 24;
  }
};

/// By halves: 32 bits are what vectors shift and mask in every lane.
template <>
struct PixelWord<PF_Pixel16> {
  using Word = std::uint64_t;

  VINTREL_INLINE static WidePixel Split(Word word) {
    const auto alphaRed = static_cast<std::uint32_t>(word);
    const auto greenBlue = static_cast<std::uint32_t>(word >> 32);
    return {static_cast<std::int32_t>(alphaRed & 0xFFFFu), static_cast<std::int32_t>(alphaRed >> 16),
            static_cast<std::int32_t>(greenBlue & 0xFFFFu), static_cast<std::int32_t>(greenBlue >> 16)};
  }
  VINTREL_INLINE static Word Join(const WidePixel& pixel) {
    const auto half = [](std::int32_t low, std::int32_t high) __attribute__((always_inline)) {
      return static_cast<std::uint32_t>(low) | static_cast<std::uint32_t>(high) << 16;
    };
    return half(pixel.alpha, pixel.red) | Word{half(pixel.green, pixel.blue)} << 32;
  }
};

template <class T>
VINTREL_INLINE typename PixelWord<T>::Word LoadWord(const void* pixel) {
  typename PixelWord<T>::Word word;
  std::memcpy(&word, pixel, sizeof word);
  return word;
}
template <class T>
VINTREL_INLINE void StoreWord(typename PixelWord<T>::Word word, void* pixel) {
  std::memcpy(pixel, &word, sizeof word);
}
