// How one flake pixel is combined with one pixel of the picture.
//
// Colour is straight (not premultiplied) going in and coming out.  The operators are exact: integers in 8 and
// 16 bits, where every division truncates, and single precision in float, where nothing is clamped.
#pragma once

#include <cstdint>

#include "hostapi/worlds.h"

/// Combines `top` (the flake, its coverage in alpha) with `bottom` (the picture).  `result` may be the same
/// pixel as `bottom`, and is in every use here.  Never fails; channels in range stay in range.
template <class T>
using TransferFunc = void (*)(const T* top, const T* bottom, T& result);

/// Top over bottom.  A transparent bottom yields the top unchanged, even where the top is transparent too.
template <class T>
void JCompositeT(const T* top, const T* bottom, T& result);

/// Bottom with each colour channel raised towards the top where the top is lighter.  A transparent bottom
/// yields the top; a partly transparent one is first rescaled to the alpha of the union.
template <class T>
void JLightenT(const T* top, const T* bottom, T& result);

/// In 16 bits the lightening starts so many steps above transparent and stays that much below opaque.
inline constexpr std::int32_t kLightenThreshold16 = 8;

/// Bottom over top: the flake goes behind the picture.
template <class T>
void JCompositeUnderT(const T* top, const T* bottom, T& result) {
  JCompositeT<T>(bottom, top, result);
}

/// Converts a pixel to another depth, all four channels.  16 bits: 0 and 255 become exactly 0 and 32768, the
/// values between round to the nearest.
template <class T>
void AdaptDepth(PF_Pixel in, T& out);

template <>
void JCompositeT<PF_Pixel>(const PF_Pixel* top, const PF_Pixel* bottom, PF_Pixel& result);
template <>
void JCompositeT<PF_Pixel16>(const PF_Pixel16* top, const PF_Pixel16* bottom, PF_Pixel16& result);
template <>
void JCompositeT<PF_PixelFloat>(const PF_PixelFloat* top, const PF_PixelFloat* bottom, PF_PixelFloat& result);
template <>
void JLightenT<PF_Pixel>(const PF_Pixel* top, const PF_Pixel* bottom, PF_Pixel& result);
template <>
void JLightenT<PF_Pixel16>(const PF_Pixel16* top, const PF_Pixel16* bottom, PF_Pixel16& result);
template <>
void JLightenT<PF_PixelFloat>(const PF_PixelFloat* top, const PF_PixelFloat* bottom, PF_PixelFloat& result);
template <>
void AdaptDepth<PF_Pixel16>(PF_Pixel in, PF_Pixel16& out);
