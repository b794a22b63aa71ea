#include "minihost/picture/sampling.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "minihost/picture/wide_pixel.h"
#include "minihost/picture/world.h"

namespace minihost {
namespace {

constexpr int kFractionBits = 16;
constexpr std::uint32_t kOne = 1u << kFractionBits;
constexpr std::uint32_t kFractionMask = kOne - 1;

// A position along one axis, moved onto the world: the pixel at or before it, and the fraction beyond that.
// On the last pixel the fraction is 0.
struct Place {
  std::int32_t pixel;
  std::uint32_t fraction;
};

Place PlaceOf(PF_Fixed position, std::int32_t size) noexcept {
  const std::int64_t last = std::int64_t{size - 1} * kOne;
  const std::int64_t inside = std::clamp(std::int64_t{position}, std::int64_t{0}, last);
  return {static_cast<std::int32_t>(inside >> kFractionBits),
          static_cast<std::uint32_t>(inside) & kFractionMask};
}

// The four pixels around a position, left to right in each row.
template <class P>
struct Square {
  const P& topLeft;
  const P& topRight;
  const P& bottomLeft;
  const P& bottomRight;

  bool HasOneAlpha() const noexcept {
    return (topLeft.alpha == topRight.alpha) & (topLeft.alpha == bottomLeft.alpha) &
           (topLeft.alpha == bottomRight.alpha);
  }
};

// The plain mean of integer pixels, which nearly every sample is.  Weights add up to 2^32 and channels take
// 16 bits, so that the sums are exact in double precision.
template <class P>
[[gnu::always_inline]] inline P MeanOfPixels(const Square<P>& square, std::uint32_t x,
                                             std::uint32_t y) noexcept {
  using Channel = decltype(P::alpha);
  constexpr double kUnit = kOne;
  const double right = x, below = y;
  const double topLeft = (kUnit - right) * (kUnit - below), topRight = right * (kUnit - below);
  const double bottomLeft = (kUnit - right) * below, bottomRight = right * below;
  const WideChannels pixels[] = {Widen(square.topLeft), Widen(square.topRight), Widen(square.bottomLeft),
                                 Widen(square.bottomRight)};
  const auto mean = [&](Doubles WideChannels::*channels) {
    const Doubles sum = pixels[0].*channels * topLeft + pixels[1].*channels * topRight +
                        pixels[2].*channels * bottomLeft + pixels[3].*channels * bottomRight;
    return sum * 0x1p-32 + 0.5;
  };
  const Doubles alphaRed = mean(&WideChannels::alphaRed);
  const Doubles greenBlue = mean(&WideChannels::greenBlue);
  const auto whole = [](double value) { return static_cast<Channel>(static_cast<std::int32_t>(value)); };
  return {whole(alphaRed[0]), whole(alphaRed[1]), whole(greenBlue[0]), whole(greenBlue[1])};
}

using Floats = float __attribute__((vector_size(16)));

// By a + (b - a) * t, which keeps an even picture exactly even.
[[gnu::always_inline]] inline PF_PixelFloat MeanOfPixels(const Square<PF_PixelFloat>& square, std::uint32_t x,
                                                         std::uint32_t y) noexcept {
  constexpr float kUnit = 1.0f / static_cast<float>(kOne);
  const float right = static_cast<float>(x) * kUnit, below = static_cast<float>(y) * kUnit;
  const auto channels = [](const PF_PixelFloat& pixel) {
    Floats floats;
    std::memcpy(&floats, &pixel, sizeof pixel);
    return floats;
  };
  const Floats topLeft = channels(square.topLeft), bottomLeft = channels(square.bottomLeft);
  const Floats top = topLeft + (channels(square.topRight) - topLeft) * right;
  const Floats bottom = bottomLeft + (channels(square.bottomRight) - bottomLeft) * right;
  const Floats mean = top + (bottom - top) * below;
  PF_PixelFloat pixel;
  std::memcpy(&pixel, &mean, sizeof pixel);
  return pixel;
}

// Colours weighted by alpha, in integer depths.  Sums are exact: the weights add up to 2^32, a channel times
// an alpha takes 30 bits.
template <class P>
struct WholeBlend {
  using Channel = decltype(P::alpha);
  std::uint64_t x, y;

  std::uint64_t Sum(std::uint64_t topLeft, std::uint64_t topRight, std::uint64_t bottomLeft,
                    std::uint64_t bottomRight) const noexcept {
    const std::uint64_t top = topLeft * (kOne - x) + topRight * x;
    const std::uint64_t bottom = bottomLeft * (kOne - x) + bottomRight * x;
    return top * (kOne - y) + bottom * y;
  }

  std::uint64_t ColorWeight(const Square<P>& square) const noexcept {
    return Sum(square.topLeft.alpha, square.topRight.alpha, square.bottomLeft.alpha,
               square.bottomRight.alpha);
  }

  Channel Weighted(Channel P::*channel, const Square<P>& square, std::uint64_t weight) const noexcept {
    const auto product = [channel](const P& pixel) { return std::uint64_t{pixel.alpha} * (pixel.*channel); };
    const std::uint64_t sum = Sum(product(square.topLeft), product(square.topRight),
                                  product(square.bottomLeft), product(square.bottomRight));
    return static_cast<Channel>((sum + weight / 2) / weight);
  }
};

// The same in float, adding products of one sign, so that faint alphas keep their digits.
struct FloatBlend {
  using P = PF_PixelFloat;
  float x, y;

  float Sum(float topLeft, float topRight, float bottomLeft, float bottomRight) const noexcept {
    return (topLeft * (1 - x) + topRight * x) * (1 - y) + (bottomLeft * (1 - x) + bottomRight * x) * y;
  }

  static float WeightOf(const P& pixel) noexcept { return std::max(pixel.alpha, 0.0f); }

  float ColorWeight(const Square<P>& square) const noexcept {
    return Sum(WeightOf(square.topLeft), WeightOf(square.topRight), WeightOf(square.bottomLeft),
               WeightOf(square.bottomRight));
  }

  float Weighted(float P::*channel, const Square<P>& square, float weight) const noexcept {
    const auto product = [channel](const P& pixel) { return WeightOf(pixel) * (pixel.*channel); };
    return Sum(product(square.topLeft), product(square.topRight), product(square.bottomLeft),
               product(square.bottomRight)) /
           weight;
  }
};

template <class P>
auto BlendAt(std::uint32_t x, std::uint32_t y) noexcept {
  if constexpr (std::is_same_v<P, PF_PixelFloat>) {
    constexpr float kUnit = 1.0f / static_cast<float>(kOne);
    return FloatBlend{static_cast<float>(x) * kUnit, static_cast<float>(y) * kUnit};
  } else {
    return WholeBlend<P>{x, y};
  }
}

// Out of line, so that the usual way needs few registers.
template <class P>
[[gnu::noinline]] P WeightedMean(const Square<P>& square, std::uint32_t x, std::uint32_t y) noexcept {
  P mean = MeanOfPixels(square, x, y);
  const auto blend = BlendAt<P>(x, y);
  const auto weight = blend.ColorWeight(square);
  if (weight > 0) {
    mean.red = blend.Weighted(&P::red, square, weight);
    mean.green = blend.Weighted(&P::green, square, weight);
    mean.blue = blend.Weighted(&P::blue, square, weight);
  }
  return mean;
}

}  // namespace

template <class P>
P SampleNearest(const PF_LayerDef& src, PF_Fixed x, PF_Fixed y) noexcept {
  const auto nearest = [](PF_Fixed position, std::int32_t size) {
    const std::int64_t rounded = (std::int64_t{position} + kOne / 2) >> kFractionBits;
    return static_cast<std::int32_t>(std::clamp(rounded, std::int64_t{0}, std::int64_t{size - 1}));
  };
  return RowOf<const P>(src, nearest(y, src.height))[nearest(x, src.width)];
}

template <class P>
P SampleBilinear(const PF_LayerDef& src, PF_Fixed x, PF_Fixed y) noexcept {
  const Place column = PlaceOf(x, src.width);
  const Place row = PlaceOf(y, src.height);
  const P* top = RowOf<const P>(src, row.pixel) + column.pixel;
  if ((column.fraction | row.fraction) == 0) {
    return *top;
  }

  // Where a fraction is 0 the pixel beyond may not exist, and has no weight.
  const P* bottom = row.fraction == 0 ? top : RowOf<const P>(src, row.pixel + 1) + column.pixel;
  const std::ptrdiff_t right = column.fraction == 0 ? 0 : 1;
  const Square<P> square{top[0], top[right], bottom[0], bottom[right]};

  return square.HasOneAlpha() ? MeanOfPixels(square, column.fraction, row.fraction)
                              : WeightedMean(square, column.fraction, row.fraction);
}

template PF_Pixel SampleNearest<PF_Pixel>(const PF_LayerDef&, PF_Fixed, PF_Fixed) noexcept;
template PF_Pixel16 SampleNearest<PF_Pixel16>(const PF_LayerDef&, PF_Fixed, PF_Fixed) noexcept;
template PF_PixelFloat SampleNearest<PF_PixelFloat>(const PF_LayerDef&, PF_Fixed, PF_Fixed) noexcept;
template PF_Pixel SampleBilinear<PF_Pixel>(const PF_LayerDef&, PF_Fixed, PF_Fixed) noexcept;
template PF_Pixel16 SampleBilinear<PF_Pixel16>(const PF_LayerDef&, PF_Fixed, PF_Fixed) noexcept;
template PF_PixelFloat SampleBilinear<PF_PixelFloat>(const PF_LayerDef&, PF_Fixed, PF_Fixed) noexcept;

}  // namespace minihost
