#include "effect/pixel/transfer.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <numeric>
#include <random>

#include "effect/pixel/pixel_type.h"

namespace {

template <class T>
using Channel = typename PixelType<T>::Channel;

/// What the rules are computed in: wide integers, or single precision one rounded step at a time.
template <class T>
using Number = std::conditional_t<std::is_floating_point_v<Channel<T>>, float, std::int64_t>;
template <class T>
constexpr Number<T> kWhite = PixelType<T>::kWhite;

template <class T, class F>
T Colors(const T& top, const T& bottom, Number<T> alpha, F mix) {
  T result = bottom;
  result.alpha = static_cast<Channel<T>>(alpha);
  for (const auto channel : {&T::red, &T::green, &T::blue}) {
    result.*channel = static_cast<Channel<T>>(mix(Number<T>{top.*channel}, Number<T>{bottom.*channel}));
  }
  return result;
}

template <class T>
T Over(const T& top, const T& bottom) {
  const Number<T> t = top.alpha, b = bottom.alpha;
  if (!(b > 0)) {
    return top;
  }
  if (!(t > 0)) {
    return bottom;
  }
  const bool bytes = kWhite<T> == 255;
  const Number<T> weight = bytes ? t * 255 : t, rest = b * (kWhite<T> - t) / (bytes ? 1 : kWhite<T>);
  return Colors(top, bottom, (t + b) - t * b / kWhite<T>, [&](Number<T> tc, Number<T> bc) {
    const Number<T> sum = weight * tc + rest * bc;
    return kWhite<T> == 1 ? sum * (1 / (weight + rest)) : sum / (weight + rest);
  });
}

template <class T>
T Lighten(const T& top, const T& bottom) {
  const Number<T> t = top.alpha - Number<T>{kWhite<T> == 32768 ? 8 : 0}, b = bottom.alpha;
  if (!(b > 0)) {
    return top;
  }
  if (!(t > 0)) {
    return bottom;
  }
  const Number<T> alpha = (t + b) - t * b / kWhite<T>;
  const bool opaque = kWhite<T> == 255 ? b == kWhite<T> : !(alpha < kWhite<T>);
  return Colors(top, bottom, alpha, [&](Number<T> tc, Number<T> bc) {
    const Number<T> base = opaque ? bc : b * bc / alpha;
    return tc > base ? base + (tc - base) * t / (opaque ? kWhite<T> : alpha) : base;
  });
}

/// The operators work in place.
template <class T>
void ExpectGives(TransferFunc<T> apply, const T& top, const T& bottom, const T& want) {
  T got = bottom;
  apply(&top, &got, got);
  ASSERT_EQ(std::memcmp(&got, &want, sizeof got), 0)
      << "of " << testing::PrintToString(std::array{top, bottom, got, want});
}

/// Every pair of the alphas with every pair of the colours, different in each channel, and random pairs.
template <class T>
void ExpectAgreement(const std::vector<Channel<T>>& alphas, const std::vector<Channel<T>>& colors) {
  const auto agree = [](const T& top, const T& bottom) {
    ExpectGives(JCompositeT<T>, top, bottom, Over(top, bottom));
    ExpectGives(JCompositeUnderT<T>, top, bottom, Over(bottom, top));
    ExpectGives(JLightenT<T>, top, bottom, Lighten(top, bottom));
  };
  for (const auto topAlpha : alphas) {
    for (const auto bottomAlpha : alphas) {
      for (const auto tc : colors) {
        for (const auto bc : colors) {
          agree({topAlpha, tc, bc, colors[1]}, {bottomAlpha, bc, tc, bc});
        }
      }
    }
  }
  std::mt19937 random(977);
  std::uniform_real_distribution<float> unit(0, 1);
  const auto draw = [&] { return static_cast<Channel<T>>(unit(random) * kWhite<T>); };
  for (int i = 0; i < 500'000; ++i) {
    agree({draw(), draw(), draw(), draw()}, {draw(), draw(), draw(), draw()});
  }
}

TEST(Transfer, AgreesWithTheRulesBitForBit) {
  std::vector<std::uint8_t> alphas(256);
  std::iota(alphas.begin(), alphas.end(), std::uint8_t{0});
  ExpectAgreement<PF_Pixel>(alphas, {0, 1, 2, 63, 127, 128, 200, 254, 255});
  ExpectAgreement<PF_Pixel16>({0, 1, 7, 8, 9, 10, 4095, 16384, 28672, 32759, 32760, 32761, 32767, 32768},
                              {0, 1, 2, 255, 4096, 16383, 16384, 21845, 32760, 32767, 32768});
  ExpectAgreement<PF_PixelFloat>(
      {0.0f, -0.0f, -0.5f, 1e-40f, 0.25f, 0.7f, 0x1.fffffep-1f, 1.0f, 2.5f, std::nanf("")},
      {0.0f, -0.0f, -3.0f, 0.1f, 0.4f, 0.5f, 1.0f, 7.5f, 1e30f});
  ExpectGives<PF_Pixel>(JCompositeT, {128, 255, 0, 0}, {128, 0, 0, 255}, {192, 170, 0, 84});
  ExpectGives<PF_Pixel16>(JLightenT, {9, 32768, 0, 0}, {32768, 0, 0, 0}, {32768, 1, 0, 0});
}

TEST(Transfer, AdaptDepthRoundsEveryByteInEveryChannel) {
  for (std::uint32_t in = 0; in < 252; ++in) {
    PF_Pixel16 out{};
    AdaptDepth(std::bit_cast<PF_Pixel>(0x03020100u + in * 0x01010101u), out);
    for (std::uint32_t channel = in; const std::uint32_t got : {out.alpha, out.red, out.green, out.blue}) {
      EXPECT_EQ(got, (channel++ * 32768 + 128) / 255) << in;
    }
  }
}

}  // namespace
