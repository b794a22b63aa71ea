// Pixels and the image record ("world") that holds them.
#pragma once

#include <cstdint>

#include "hostapi/types.h"

/// 8 bits a channel, straight alpha, opaque and white at 255.
struct PF_Pixel {
  std::uint8_t alpha;
  std::uint8_t red;
  std::uint8_t green;
  std::uint8_t blue;
};

/// 16 bits a channel, straight alpha, opaque and white at 32768; values above 32768 do not occur.
struct PF_Pixel16 {
  std::uint16_t alpha;
  std::uint16_t red;
  std::uint16_t green;
  std::uint16_t blue;
};

/// Single precision a channel, straight alpha, opaque and white at 1.0; values beyond 0..1 are kept.
struct PF_PixelFloat {
  float alpha;
  float red;
  float green;
  float blue;
};

/// Four characters in memory order, read as a little-endian integer.
using PF_PixelFormat = std::int32_t;

inline constexpr PF_PixelFormat PF_PixelFormat_ARGB32 = 0x62677261;   // "argb": PF_Pixel
inline constexpr PF_PixelFormat PF_PixelFormat_ARGB64 = 0x36316561;   // "ae16": PF_Pixel16
inline constexpr PF_PixelFormat PF_PixelFormat_ARGB128 = 0x32336561;  // "ae32": PF_PixelFloat
inline constexpr PF_PixelFormat PF_PixelFormat_INVALID = 0x66646162;  // "badf"

using PF_WorldFlags = std::int32_t;
inline constexpr PF_WorldFlags PF_WorldFlag_DEEP = 1;  // 16 bits a channel

/// An image in the host's memory.  Whoever created the world owns `data`; the effect reads and writes
/// pixels and never frees or replaces the buffer of a world that it was handed.
struct PF_LayerDef {
  PF_WorldFlags world_flags;
  void* data;             // first row, topmost; null in a world without pixels
  std::int32_t rowbytes;  // bytes from one row to the next, at least width pixels; padding is not touched
  std::int32_t width;     // pixels
  std::int32_t height;    // rows
  PF_LRect extent_hint;   // the area that will be shown, inside the world
};

using PF_EffectWorld = PF_LayerDef;
