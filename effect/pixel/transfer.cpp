#include "effect/pixel/transfer.h"

#include <cstdint>

#include "effect/pixel/pixel_type.h"

namespace {

// Unsigned throughout: a product of two 16-bit channels at white is 2^30, and "over" adds two of them.
using Wide = std::uint32_t;

constexpr Wide kWhite8 = PixelType<PF_Pixel>::kWhite;
constexpr Wide kWhite16 = PixelType<PF_Pixel16>::kWhite;

constexpr std::uint8_t Narrow8(Wide value) {
  return static_cast<std::uint8_t>(value);
}
constexpr std::uint16_t Narrow16(Wide value) {
  return static_cast<std::uint16_t>(value);
}

// The alpha of the union of two coverages, `white` being full coverage.
constexpr Wide UnionAlpha(Wide top, Wide bottom, Wide white) {
  return top + bottom - top * bottom / white;
}

// Moves `bottom` towards a lighter `top` by weight / whole, truncated.
constexpr Wide RaiseTowards(Wide top, Wide bottom, Wide weight, Wide whole) {
  return top > bottom ? bottom + weight * (top - bottom) / whole : bottom;
}

// Straight-alpha "over" for one channel: the mean of top and bottom by their weights, truncated.
constexpr Wide OverChannel(Wide top, Wide topWeight, Wide bottom, Wide bottomWeight) {
  return (top * topWeight + bottom * bottomWeight) / (topWeight + bottomWeight);
}

float RaiseOpaque(float top, float bottom, float topAlpha) {
  return top > bottom ? bottom + (top - bottom) * topAlpha : bottom;
}

float RaiseRescaled(float top, float base, float topAlpha, float alpha) {
  return top > base ? base + ((top - base) * topAlpha) / alpha : base;
}

}  // namespace

// Each operator is written out whole in each depth, though their shapes are alike: they are the meaning of
// the fast forms, and each rounds, and judges what is transparent or opaque, in a way of its own.

template <>
void JCompositeT<PF_PixelFloat>(const PF_PixelFloat* top, const PF_PixelFloat* bottom,
                                PF_PixelFloat& result) {
  const PF_PixelFloat t = *top;
  const PF_PixelFloat b = *bottom;
  if (!(b.alpha > 0.0f)) {
    result = t;
    return;
  }
  if (!(t.alpha > 0.0f)) {
    result = b;
    return;
  }
  const float bottomWeight = (1.0f - t.alpha) * b.alpha;
  const float normalize = 1.0f / (t.alpha + bottomWeight);
  result.alpha = (b.alpha + t.alpha) - b.alpha * t.alpha;
  result.red = (t.alpha * t.red + bottomWeight * b.red) * normalize;
  result.green = (t.alpha * t.green + bottomWeight * b.green) * normalize;
  result.blue = (t.alpha * t.blue + bottomWeight * b.blue) * normalize;
}

template <>
void JCompositeT<PF_Pixel>(const PF_Pixel* top, const PF_Pixel* bottom, PF_Pixel& result) {
  const PF_Pixel t = *top;
  const PF_Pixel b = *bottom;
  if (b.alpha == 0 || t.alpha == kWhite8) {
    result = t;
    return;
  }
  if (t.alpha == 0) {
    result = b;
    return;
  }
  // The weights stay unrounded, so the divisor is 255 times the exact output alpha.
  const Wide topWeight = t.alpha * kWhite8;
  const Wide bottomWeight = b.alpha * (kWhite8 - t.alpha);
  result.alpha = Narrow8(UnionAlpha(t.alpha, b.alpha, kWhite8));
  result.red = Narrow8(OverChannel(t.red, topWeight, b.red, bottomWeight));
  result.green = Narrow8(OverChannel(t.green, topWeight, b.green, bottomWeight));
  result.blue = Narrow8(OverChannel(t.blue, topWeight, b.blue, bottomWeight));
}

template <>
void JCompositeT<PF_Pixel16>(const PF_Pixel16* top, const PF_Pixel16* bottom, PF_Pixel16& result) {
  const PF_Pixel16 t = *top;
  const PF_Pixel16 b = *bottom;
  if (b.alpha == 0) {
    result = t;
    return;
  }
  if (t.alpha == 0) {
    result = b;
    return;
  }
  const Wide topWeight = t.alpha;
  const Wide bottomWeight = b.alpha * (kWhite16 - topWeight) / kWhite16;
  result.alpha = Narrow16(UnionAlpha(t.alpha, b.alpha, kWhite16));
  result.red = Narrow16(OverChannel(t.red, topWeight, b.red, bottomWeight));
  result.green = Narrow16(OverChannel(t.green, topWeight, b.green, bottomWeight));
  result.blue = Narrow16(OverChannel(t.blue, topWeight, b.blue, bottomWeight));
}

template <>
void JLightenT<PF_PixelFloat>(const PF_PixelFloat* top, const PF_PixelFloat* bottom, PF_PixelFloat& result) {
  const PF_PixelFloat t = *top;
  const PF_PixelFloat b = *bottom;
  if (!(b.alpha > 0.0f)) {
    result = t;
    return;
  }
  if (!(t.alpha > 0.0f)) {
    result = b;
    return;
  }
  const float alpha = (t.alpha + b.alpha) - t.alpha * b.alpha;
  result.alpha = alpha;
  // The union's alpha decides, not the bottom's: an opaque flake leaves a thin bottom's colour unscaled.
  if (!(alpha < 1.0f)) {
    result.red = RaiseOpaque(t.red, b.red, t.alpha);
    result.green = RaiseOpaque(t.green, b.green, t.alpha);
    result.blue = RaiseOpaque(t.blue, b.blue, t.alpha);
    return;
  }
  result.red = RaiseRescaled(t.red, (b.alpha * b.red) / alpha, t.alpha, alpha);
  result.green = RaiseRescaled(t.green, (b.alpha * b.green) / alpha, t.alpha, alpha);
  result.blue = RaiseRescaled(t.blue, (b.alpha * b.blue) / alpha, t.alpha, alpha);
}

template <>
void JLightenT<PF_Pixel>(const PF_Pixel* top, const PF_Pixel* bottom, PF_Pixel& result) {
  const PF_Pixel t = *top;
  const PF_Pixel b = *bottom;
  if (b.alpha == 0) {
    result = t;
    return;
  }
  if (t.alpha == 0) {
    result = b;
    return;
  }
  // Over an opaque bottom the union is 255 and the rescaling gives the bottom's own colour, so that the
  // opaque case needs no branch of its own here.
  const Wide alpha = UnionAlpha(t.alpha, b.alpha, kWhite8);
  result.alpha = Narrow8(alpha);
  result.red = Narrow8(RaiseTowards(t.red, b.red * b.alpha / alpha, t.alpha, alpha));
  result.green = Narrow8(RaiseTowards(t.green, b.green * b.alpha / alpha, t.alpha, alpha));
  result.blue = Narrow8(RaiseTowards(t.blue, b.blue * b.alpha / alpha, t.alpha, alpha));
}

template <>
void JLightenT<PF_Pixel16>(const PF_Pixel16* top, const PF_Pixel16* bottom, PF_Pixel16& result) {
  const PF_Pixel16 t = *top;
  const PF_Pixel16 b = *bottom;
  if (b.alpha == 0) {
    result = t;
    return;
  }
  if (t.alpha <= kLightenThreshold16) {
    result = b;
    return;
  }
  const Wide topAlpha = t.alpha - kLightenThreshold16;
  const Wide alpha = UnionAlpha(topAlpha, b.alpha, kWhite16);
  result.alpha = Narrow16(alpha);
  // The union's alpha decides, not the bottom's: the colour of a nearly opaque bottom stays unscaled.
  if (alpha >= kWhite16) {
    result.red = Narrow16(RaiseTowards(t.red, b.red, topAlpha, kWhite16));
    result.green = Narrow16(RaiseTowards(t.green, b.green, topAlpha, kWhite16));
    result.blue = Narrow16(RaiseTowards(t.blue, b.blue, topAlpha, kWhite16));
    return;
  }
  result.red = Narrow16(RaiseTowards(t.red, b.red * b.alpha / alpha, topAlpha, alpha));
  result.green = Narrow16(RaiseTowards(t.green, b.green * b.alpha / alpha, topAlpha, alpha));
  result.blue = Narrow16(RaiseTowards(t.blue, b.blue * b.alpha / alpha, topAlpha, alpha));
}

template <>
void AdaptDepth<PF_Pixel16>(PF_Pixel in, PF_Pixel16& out) {
  const auto adapt = [](Wide channel) { return Narrow16((channel * kWhite16 + 128) / kWhite8); };
  out = {adapt(in.alpha), adapt(in.red), adapt(in.green), adapt(in.blue)};
}
