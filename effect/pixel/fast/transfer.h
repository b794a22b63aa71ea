// The transfer operators of 8 and 16 bits without branches, for loops over many pixels.
//
// Each computes every case and then chooses, and divides by way of single precision.  Equal to the operator
// of the same name bit for bit, for channels in range.
#pragma once

#include <cstdint>

#include "effect/pixel/fast/cpu_path.h"
#include "effect/pixel/fast/pixel_words.h"
#include "effect/pixel/pixel_type.h"
#include "effect/pixel/transfer.h"

/// Divides small integers by one divisor, truncated.
///
/// 0 <= numerator < 2^16 and 0 < divisor < 2^8: the half that is added keeps the exact quotient at least
/// 1/(2 * 255) from the nearest whole number, and the two roundings move it by less than 256 * 2^-23.
class Divisor8 {
 public:
  VINTREL_INLINE explicit Divisor8(std::int32_t divisor) : reciprocal_(1.0f / static_cast<float>(divisor)) {}
  VINTREL_INLINE std::int32_t operator()(std::int32_t numerator) const {
    return static_cast<std::int32_t>((static_cast<float>(numerator) + 0.5f) * reciprocal_);
  }

 private:
  float reciprocal_;
};

/// 0 <= numerator <= 2^30, 0 < divisor < 2^16, quotient at most 2^15: three roundings of 2^-24 move the
/// estimate by less than 2^-22 of it, and the reciprocal is too great by 2^-21, so that the estimate is never
/// below the quotient and less than 1/32 above.  Truncated it is too great by one at most, and its product
/// with the divisor says so.
class Divisor16 {
 public:
  VINTREL_INLINE explicit Divisor16(std::int32_t divisor)
      : divisor_(divisor), reciprocal_((1.0f + 0x1p-21f) / static_cast<float>(divisor)) {}
  VINTREL_INLINE std::int32_t operator()(std::int32_t numerator) const {
    const std::int32_t estimate = static_cast<std::int32_t>(static_cast<float>(numerator) * reciprocal_);
    return estimate - (estimate * divisor_ > numerator ? 1 : 0);
  }

 private:
  std::int32_t divisor_;
  float reciprocal_;
};

namespace branchless {

inline constexpr std::int32_t kWhite8 = PixelType<PF_Pixel>::kWhite;
inline constexpr std::int32_t kWhite16 = PixelType<PF_Pixel16>::kWhite;
inline constexpr std::int32_t kWhiteBits16 = 15;  // a shift divides by white
static_assert(1 << kWhiteBits16 == kWhite16);

VINTREL_INLINE WidePixel Choose(bool condition, const WidePixel& yes, const WidePixel& no) {
  return {condition ? yes.alpha : no.alpha, condition ? yes.red : no.red, condition ? yes.green : no.green,
          condition ? yes.blue : no.blue};
}

template <class Divisor>
VINTREL_INLINE std::int32_t Raise(std::int32_t top, std::int32_t base, std::int32_t topAlpha,
                                  Divisor divide) {
  const std::int32_t difference = top - base;
  const std::int32_t above = difference > 0 ? difference : 0;
  return base + divide(topAlpha * above);
}

// Top alphas of 0 and 255 give the bottom and the top by the general formula.
VINTREL_INLINE WidePixel Composite8(const WidePixel& top, const WidePixel& bottom) {
  const std::int32_t topWeight = top.alpha * kWhite8;
  const std::int32_t bottomWeight = bottom.alpha * (kWhite8 - top.alpha);
  const std::int32_t sum = topWeight + bottomWeight;
  const Divisor16 divide(sum > 0 ? sum : 1);
  const WidePixel over = {top.alpha + bottom.alpha - Divisor8(kWhite8)(top.alpha * bottom.alpha),
                          divide(top.red * topWeight + bottom.red * bottomWeight),
                          divide(top.green * topWeight + bottom.green * bottomWeight),
                          divide(top.blue * topWeight + bottom.blue * bottomWeight)};
  return Choose(bottom.alpha == 0, top, over);
}

// A top alpha of 0 gives the bottom by the general formula.
VINTREL_INLINE WidePixel Lighten8(const WidePixel& top, const WidePixel& bottom) {
  const std::int32_t alpha = top.alpha + bottom.alpha - Divisor8(kWhite8)(top.alpha * bottom.alpha);
  const Divisor8 divide(alpha > 0 ? alpha : 1);
  const WidePixel raised = {alpha, Raise(top.red, divide(bottom.red * bottom.alpha), top.alpha, divide),
                            Raise(top.green, divide(bottom.green * bottom.alpha), top.alpha, divide),
                            Raise(top.blue, divide(bottom.blue * bottom.alpha), top.alpha, divide)};
  return Choose(bottom.alpha == 0, top, raised);
}

// A top alpha of 0 gives the bottom by the general formula.
VINTREL_INLINE WidePixel Composite16(const WidePixel& top, const WidePixel& bottom) {
  const std::int32_t bottomWeight = (bottom.alpha * (kWhite16 - top.alpha)) >> kWhiteBits16;
  const std::int32_t sum = top.alpha + bottomWeight;
  const Divisor16 divide(sum > 0 ? sum : 1);
  const WidePixel over = {top.alpha + bottom.alpha - ((top.alpha * bottom.alpha) >> kWhiteBits16),
                          divide(top.red * top.alpha + bottom.red * bottomWeight),
                          divide(top.green * top.alpha + bottom.green * bottomWeight),
                          divide(top.blue * top.alpha + bottom.blue * bottomWeight)};
  return Choose(bottom.alpha == 0, top, over);
}

// A top alpha up to the threshold gives the bottom by the general formula; over an opaque union the bottom's
// colour stays unscaled, its weight being the divisor.
VINTREL_INLINE WidePixel Lighten16(const WidePixel& top, const WidePixel& bottom) {
  const std::int32_t topAlpha = top.alpha > kLightenThreshold16 ? top.alpha - kLightenThreshold16 : 0;
  const std::int32_t alpha = topAlpha + bottom.alpha - ((topAlpha * bottom.alpha) >> kWhiteBits16);
  const Divisor16 divide(alpha > 0 ? alpha : 1);
  const std::int32_t weight = alpha >= kWhite16 ? alpha : bottom.alpha;
  const WidePixel raised = {alpha, Raise(top.red, divide(bottom.red * weight), topAlpha, divide),
                            Raise(top.green, divide(bottom.green * weight), topAlpha, divide),
                            Raise(top.blue, divide(bottom.blue * weight), topAlpha, divide)};
  return Choose(bottom.alpha == 0, top, raised);
}

}  // namespace branchless
