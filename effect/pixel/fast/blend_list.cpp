#include "effect/pixel/fast/blend_list.h"

#include <cstdint>
#include <cstring>

#include "effect/pixel/fast/pixel_words.h"
#include "effect/pixel/fast/transfer.h"

namespace {

// One block of listed pixels: of one flake, so no pixel twice but for repeats of the same entry.
template <class T>
struct ListedBlock {
  std::byte* image;
  const std::uint32_t* offsets;
  const typename CoverageList<T>::Alpha* alphas;
  T color;
};

template <BlendMode mode, class Operator, class Pixel>
VINTREL_INLINE Pixel Combine(const Pixel& flake, const Pixel& picture) {
  if constexpr (mode == BlendMode::kLighten) {
    return Operator::Lighten(flake, picture);
  } else if constexpr (mode == BlendMode::kComposite) {
    return Operator::Composite(flake, picture);
  } else {
    static_assert(mode == BlendMode::kCompositeUnder);
    return Operator::Composite(picture, flake);
  }
}

// The operators of one depth.  Channels above white do not occur in pictures of 16 bits; read as white they
// cannot overflow the products.
template <class T>
struct Operators;

template <>
struct Operators<PF_Pixel> {
  VINTREL_INLINE static WidePixel Lighten(const WidePixel& top, const WidePixel& bottom) {
    return branchless::Lighten8(top, bottom);
  }
  VINTREL_INLINE static WidePixel Composite(const WidePixel& top, const WidePixel& bottom) {
    return branchless::Composite8(top, bottom);
  }
  VINTREL_INLINE static WidePixel InRange(const WidePixel& picture) { return picture; }
};

template <>
struct Operators<PF_Pixel16> {
  VINTREL_INLINE static WidePixel Lighten(const WidePixel& top, const WidePixel& bottom) {
    return branchless::Lighten16(top, bottom);
  }
  VINTREL_INLINE static WidePixel Composite(const WidePixel& top, const WidePixel& bottom) {
    return branchless::Composite16(top, bottom);
  }
  VINTREL_INLINE static WidePixel InRange(const WidePixel& picture) {
    const auto channel = [](std::int32_t value) __attribute__((always_inline)) {
      return value < branchless::kWhite16 ? value : branchless::kWhite16;
    };
    return {channel(picture.alpha), channel(picture.red), channel(picture.green), channel(picture.blue)};
  }
};

template <BlendMode mode, class T>
VINTREL_INLINE void BlendBlock(const ListedBlock<T>& block) {
  using Word = typename PixelWord<T>::Word;
  constexpr std::size_t kBlock = CoverageList<T>::kBlock;
  Word words[kBlock];
#pragma GCC unroll 1
  for (std::size_t k = 0; k < kBlock; ++k) {
    words[k] = LoadWord<T>(block.image + block.offsets[k]);
  }
  const std::int32_t red = block.color.red;
  const std::int32_t green = block.color.green;
  const std::int32_t blue = block.color.blue;
#pragma GCC unroll 1
  for (std::size_t k = 0; k < kBlock; ++k) {
    const WidePixel flake = {block.alphas[k], red, green, blue};
    const WidePixel picture = Operators<T>::InRange(PixelWord<T>::Split(words[k]));
    words[k] = PixelWord<T>::Join(Combine<mode, Operators<T>>(flake, picture));
  }
#pragma GCC unroll 8
  for (std::size_t k = 0; k < kBlock; ++k) {
    StoreWord<T>(words[k], block.image + block.offsets[k]);
  }
}

// Four lanes, a vector on every processor; wider ones would be taken apart where the target lacks them.
using FloatVector = float __attribute__((vector_size(16)));

// Four pixels, a lane for each.
struct PlanarPixels {
  FloatVector alpha;
  FloatVector red;
  FloatVector green;
  FloatVector blue;
};

// Four pixels to four channels, and back: a transposition either way.
VINTREL_INLINE PlanarPixels Transpose(const PlanarPixels& m) {
  const FloatVector low01 = __builtin_shufflevector(m.alpha, m.red, 0, 4, 1, 5);
  const FloatVector high01 = __builtin_shufflevector(m.alpha, m.red, 2, 6, 3, 7);
  const FloatVector low23 = __builtin_shufflevector(m.green, m.blue, 0, 4, 1, 5);
  const FloatVector high23 = __builtin_shufflevector(m.green, m.blue, 2, 6, 3, 7);
  return {__builtin_shufflevector(low01, low23, 0, 1, 4, 5),
          __builtin_shufflevector(low01, low23, 2, 3, 6, 7),
          __builtin_shufflevector(high01, high23, 0, 1, 4, 5),
          __builtin_shufflevector(high01, high23, 2, 3, 6, 7)};
}

template <>
struct Operators<PF_PixelFloat> {
  VINTREL_INLINE static FloatVector Over(FloatVector topAlpha, FloatVector top, FloatVector bottomWeight,
                                         FloatVector bottom, FloatVector normalize) {
    return (topAlpha * top + bottomWeight * bottom) * normalize;
  }

  VINTREL_INLINE static PlanarPixels Composite(const PlanarPixels& top, const PlanarPixels& bottom) {
    const FloatVector bottomWeight = (1.0f - top.alpha) * bottom.alpha;
    const FloatVector normalize = 1.0f / (top.alpha + bottomWeight);
    const PlanarPixels over = {(bottom.alpha + top.alpha) - bottom.alpha * top.alpha,
                               Over(top.alpha, top.red, bottomWeight, bottom.red, normalize),
                               Over(top.alpha, top.green, bottomWeight, bottom.green, normalize),
                               Over(top.alpha, top.blue, bottomWeight, bottom.blue, normalize)};
    return ChooseCase(top, bottom, over);
  }

  VINTREL_INLINE static FloatVector Raise(FloatVector top, FloatVector bottom, FloatVector topAlpha,
                                          FloatVector weight, FloatVector divisor) {
    const FloatVector base = (weight * bottom) / divisor;
    const FloatVector raised = base + ((top - base) * topAlpha) / divisor;
    return top > base ? raised : base;
  }

  // Over an opaque union the bottom's colour stays and the raise is not divided: a product with 1 divided
  // by 1.
  VINTREL_INLINE static PlanarPixels Lighten(const PlanarPixels& top, const PlanarPixels& bottom) {
    const FloatVector one = {1.0f, 1.0f, 1.0f, 1.0f};
    const FloatVector alpha = (top.alpha + bottom.alpha) - top.alpha * bottom.alpha;
    const FloatVector weight = alpha < one ? bottom.alpha : one;
    const FloatVector divisor = alpha < one ? alpha : one;
    const PlanarPixels raised = {alpha, Raise(top.red, bottom.red, top.alpha, weight, divisor),
                                 Raise(top.green, bottom.green, top.alpha, weight, divisor),
                                 Raise(top.blue, bottom.blue, top.alpha, weight, divisor)};
    return ChooseCase(top, bottom, raised);
  }

 private:
  // A transparent bottom yields the top before a transparent top yields the bottom.
  VINTREL_INLINE static PlanarPixels ChooseCase(const PlanarPixels& top, const PlanarPixels& bottom,
                                                const PlanarPixels& mixed) {
    const FloatVector zero = {};
    const auto choose = [&](FloatVector t, FloatVector b, FloatVector m) __attribute__((always_inline)) {
      const FloatVector seen = top.alpha > zero ? m : b;
      return bottom.alpha > zero ? seen : t;
    };
    return {choose(top.alpha, bottom.alpha, mixed.alpha), choose(top.red, bottom.red, mixed.red),
            choose(top.green, bottom.green, mixed.green), choose(top.blue, bottom.blue, mixed.blue)};
  }
};

VINTREL_INLINE FloatVector LoadVector(const void* from) {
  FloatVector vector;
  std::memcpy(&vector, from, sizeof vector);
  return vector;
}
VINTREL_INLINE void StoreVector(const FloatVector& vector, std::byte* to) {
  std::memcpy(to, &vector, sizeof vector);
}

template <BlendMode mode>
VINTREL_INLINE void BlendBlock(const ListedBlock<PF_PixelFloat>& block) {
  static_assert(CoverageList<PF_PixelFloat>::kBlock == 4);
  const auto pixel = [&](std::size_t k) __attribute__((always_inline)) {
    return block.image + block.offsets[k];
  };
  const auto lanes = [](float v) __attribute__((always_inline)) {
    return FloatVector{v, v, v, v};
  };
  const PlanarPixels picture =
      Transpose({LoadVector(pixel(0)), LoadVector(pixel(1)), LoadVector(pixel(2)), LoadVector(pixel(3))});
  const PlanarPixels flake = {LoadVector(block.alphas), lanes(block.color.red), lanes(block.color.green),
                              lanes(block.color.blue)};
  const PlanarPixels result = Transpose(Combine<mode, Operators<PF_PixelFloat>>(flake, picture));
  StoreVector(result.alpha, pixel(0));
  StoreVector(result.red, pixel(1));
  StoreVector(result.green, pixel(2));
  StoreVector(result.blue, pixel(3));
}

template <class T, BlendMode mode>
VINTREL_INLINE void BlendBlocks(const CoverageList<T>& list, std::size_t begin, std::size_t end,
                                const Lanes<T>& colors, void* pixels) {
  constexpr std::size_t kBlock = CoverageList<T>::kBlock;
  std::byte* const image = static_cast<std::byte*>(pixels);
  for (std::size_t entry = begin; entry < end; entry += kBlock) {
    // Flakes fall anywhere in a picture that no cache holds, but the list knows where.
    for (std::size_t k = 0; k < kBlock; ++k) {
      __builtin_prefetch(image + list.offsets[entry + k + CoverageList<T>::kPrefetch], 1);
    }
    BlendBlock<mode>(
        ListedBlock<T>{image, &list.offsets[entry], &list.alphas[entry], colors[list.lanes[entry / kBlock]]});
  }
}

template <class T>
VINTREL_INLINE void BlendMany(const CoverageList<T>& list, std::size_t begin, std::size_t end,
                              const Lanes<T>& colors, BlendMode mode, void* pixels) {
  switch (mode) {
    case BlendMode::kLighten:
      return BlendBlocks<T, BlendMode::kLighten>(list, begin, end, colors, pixels);
    case BlendMode::kComposite:
      return BlendBlocks<T, BlendMode::kComposite>(list, begin, end, colors, pixels);
    case BlendMode::kCompositeUnder:
      return BlendBlocks<T, BlendMode::kCompositeUnder>(list, begin, end, colors, pixels);
  }
}

}  // namespace

template <class T>
void BlendList(const CoverageList<T>& list, std::size_t begin, std::size_t end, const Lanes<T>& colors,
               BlendMode mode, void* pixels, CpuPath path) {
  RunOnPath<BlendMany<T>>(path, list, begin, end, colors, mode, pixels);
}

template void BlendList(const CoverageList<PF_Pixel>&, std::size_t, std::size_t, const Lanes<PF_Pixel>&,
                        BlendMode, void*, CpuPath);
template void BlendList(const CoverageList<PF_Pixel16>&, std::size_t, std::size_t, const Lanes<PF_Pixel16>&,
                        BlendMode, void*, CpuPath);
template void BlendList(const CoverageList<PF_PixelFloat>&, std::size_t, std::size_t,
                        const Lanes<PF_PixelFloat>&, BlendMode, void*, CpuPath);
