#include "effect/pixel/transfer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "effect/pixel/pixel_type.h"

namespace {

/// A pixel's channels; no value of any depth is lost in single precision.
template <class T>
std::array<float, 4> Channels(const T& pixel) {
  return std::array{static_cast<float>(pixel.alpha), static_cast<float>(pixel.red),
                    static_cast<float>(pixel.green), static_cast<float>(pixel.blue)};
}

/// Bit for bit, though any not-a-number is as good as another.
template <class T>
bool Same(const T& a, const T& b) {
  return std::ranges::equal(Channels(a), Channels(b), [](float x, float y) {
    return std::bit_cast<std::uint32_t>(x) == std::bit_cast<std::uint32_t>(y) ||
           (std::isnan(x) && std::isnan(y));
  });
}

template <class T>
std::string Text(const T& pixel) {
  return testing::PrintToString(Channels(pixel));
}

/// Applies `channel` to the three colours of a pair; the arguments and the result are 64 bits or single.
template <class T, class Alpha, class F>
T Colours(const T& top, const T& bottom, Alpha alpha, F channel) {
  using C = typename PixelType<T>::Channel;
  return {static_cast<C>(alpha), static_cast<C>(channel(Alpha{top.red}, Alpha{bottom.red})),
          static_cast<C>(channel(Alpha{top.green}, Alpha{bottom.green})),
          static_cast<C>(channel(Alpha{top.blue}, Alpha{bottom.blue}))};
}

// The rules in 64-bit integers.  A transparent bottom is asked for first.
template <class T>
T Over(const T& top, const T& bottom) {
  constexpr std::int64_t kWhite = PixelType<T>::kWhite;
  const std::int64_t t = top.alpha, b = bottom.alpha;
  if (b == 0) return top;
  if (t == 0) return bottom;
  const bool bytes = kWhite == 255;
  const std::int64_t topWeight = bytes ? t * kWhite : t;
  const std::int64_t bottomWeight = bytes ? b * (kWhite - t) : b * (kWhite - t) / kWhite;
  return Colours(top, bottom, t + b - t * b / kWhite, [&](std::int64_t tc, std::int64_t bc) {
    return (tc * topWeight + bc * bottomWeight) / (topWeight + bottomWeight);
  });
}

template <class T>
T Lighten(const T& top, const T& bottom) {
  constexpr std::int64_t kWhite = PixelType<T>::kWhite;
  const std::int64_t t = top.alpha - (kWhite == 255 ? 0 : 8), b = bottom.alpha;
  if (b == 0) return top;
  if (t <= 0) return bottom;
  const std::int64_t alpha = t + b - t * b / kWhite;
  const bool opaque = kWhite == 255 ? b == kWhite : alpha >= kWhite;
  return Colours(top, bottom, alpha, [&](std::int64_t tc, std::int64_t bc) {
    const std::int64_t base = opaque ? bc : bc * b / alpha;
    return tc > base ? base + t * (tc - base) / (opaque ? kWhite : alpha) : base;
  });
}

// The rules in single precision, one rounded step at a time.
template <>
PF_PixelFloat Over(const PF_PixelFloat& top, const PF_PixelFloat& bottom) {
  const float t = top.alpha, b = bottom.alpha;
  if (!(b > 0)) return top;
  if (!(t > 0)) return bottom;
  const float rest = (1.0f - t) * b;
  const float scale = 1.0f / (t + rest);
  return Colours(top, bottom, (b + t) - b * t,
                 [&](float tc, float bc) { return (t * tc + rest * bc) * scale; });
}

template <>
PF_PixelFloat Lighten(const PF_PixelFloat& top, const PF_PixelFloat& bottom) {
  const float t = top.alpha, b = bottom.alpha;
  if (!(b > 0)) return top;
  if (!(t > 0)) return bottom;
  const float alpha = (t + b) - t * b;
  return Colours(top, bottom, alpha, [&](float tc, float bc) {
    if (!(alpha < 1.0f)) return tc > bc ? bc + (tc - bc) * t : bc;
    const float base = (b * bc) / alpha;
    return tc > base ? base + ((tc - base) * t) / alpha : base;
  });
}

/// All three operators on one pair, into a pixel of its own and into the bottom itself.
template <class T>
testing::AssertionResult Agrees(const T& top, const T& bottom) {
  const struct {
    const char* name;
    TransferFunc<T> apply;
    T want;
  } cases[] = {{"composite", JCompositeT<T>, Over(top, bottom)},
               {"lighten", JLightenT<T>, Lighten(top, bottom)},
               {"under", JCompositeUnderT<T>, Over(bottom, top)}};
  for (const auto& c : cases) {
    T apart{}, inPlace = bottom;
    c.apply(&top, &bottom, apart);
    c.apply(&top, &inPlace, inPlace);
    for (const T& got : {apart, inPlace})
      if (!Same(got, c.want))
        return testing::AssertionFailure() << c.name << " of " << Text(top) << " and " << Text(bottom)
                                           << " gives " << Text(got) << ", not " << Text(c.want);
  }
  return testing::AssertionSuccess();
}

/// Every pair of the alphas with every pair of the colours; the channels differ so that none can stand in for
/// another.
template <class T, class C = typename PixelType<T>::Channel>
void ExpectAgreement(const std::vector<C>& alphas, const std::vector<C>& colours) {
  const C white = PixelType<T>::kWhite;
  for (const C topAlpha : alphas)
    for (const C bottomAlpha : alphas)
      for (const C tc : colours)
        for (const C bc : colours)
          ASSERT_TRUE(Agrees<T>({topAlpha, tc, bc, static_cast<C>(white - tc)}, {bottomAlpha, bc, tc, bc}));
}

TEST(Transfer, EightBitsAgreeForAllAlphas) {
  std::vector<std::uint8_t> alphas(256);
  for (std::size_t i = 0; i < alphas.size(); ++i) alphas[i] = static_cast<std::uint8_t>(i);
  ExpectAgreement<PF_Pixel>(alphas, {0, 1, 2, 63, 127, 128, 200, 254, 255});
}

TEST(Transfer, SixteenBitsAgreeAroundEveryThreshold) {
  ExpectAgreement<PF_Pixel16>({0,     1,     2,     7,     8,     9,     10,    4095,  16383, 16384, 28671,
                               28672, 28673, 28674, 30000, 32759, 32760, 32761, 32766, 32767, 32768},
                              {0, 1, 2, 255, 4096, 16383, 16384, 21845, 32760, 32767, 32768});
  std::mt19937 random(20240217);
  const auto draw = [&] { return static_cast<std::uint16_t>(random() % 32769); };
  for (int i = 0; i < 500'000; ++i)
    ASSERT_TRUE(Agrees<PF_Pixel16>({draw(), draw(), draw(), draw()}, {draw(), draw(), draw(), draw()})) << i;
}

TEST(Transfer, FloatAgreesBitForBitInsideAndOutsideTheRange) {
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  ExpectAgreement<PF_PixelFloat>({0.0f, -0.0f, -0.5f, 1e-40f, 1e-8f, 0.25f, 0.5f, 0.7f, 0x1.fffffep-1f, 1.0f,
                                  0x1.000002p0f, 2.5f, kInfinity, kNaN},
                                 {0.0f, -0.0f, -3.0f, 0.1f, 0.4f, 0.5f, 1.0f, 7.5f, 1e30f, kInfinity, kNaN});
  std::mt19937 random(977);
  const auto draw = [&] { return static_cast<float>(random() >> 8) * 0x1p-24f; };
  for (int i = 0; i < 500'000; ++i)
    ASSERT_TRUE(Agrees<PF_PixelFloat>({draw(), draw(), draw(), draw()}, {draw(), draw(), draw(), draw()}))
        << i;
}

template <class T>
void ExpectGives(TransferFunc<T> apply, T top, T bottom, T want) {
  apply(&top, &bottom, bottom);
  EXPECT_TRUE(Same(bottom, want)) << Text(bottom) << " is not " << Text(want);
}

TEST(Transfer, WorkedValues) {
  const auto bytes = ExpectGives<PF_Pixel>;
  bytes(JCompositeT, {128, 255, 255, 255}, {255, 0, 0, 0}, {255, 128, 128, 128});
  bytes(JCompositeT, {128, 255, 0, 0}, {128, 0, 0, 255}, {192, 170, 0, 84});
  bytes(JCompositeT, {0, 1, 2, 3}, {0, 4, 5, 6}, {0, 1, 2, 3});
  bytes(JLightenT, {255, 200, 100, 50}, {255, 100, 150, 50}, {255, 200, 150, 50});
  bytes(JLightenT, {128, 255, 255, 255}, {128, 100, 100, 100}, {192, 192, 192, 192});
  bytes(JLightenT, {255, 0, 0, 0}, {128, 100, 100, 100}, {255, 50, 50, 50});
  bytes(JCompositeUnderT, {9, 8, 7, 6}, {255, 1, 2, 3}, {255, 1, 2, 3});
  bytes(JCompositeUnderT, {9, 8, 7, 6}, {0, 1, 2, 3}, {9, 8, 7, 6});
  const auto words = ExpectGives<PF_Pixel16>;
  constexpr std::uint16_t kOne = 32768;
  words(JCompositeT, {16384, kOne, 0, 0}, {16384, 0, 0, kOne}, {24576, 21845, 0, 10922});
  words(JCompositeT, {16384, kOne, kOne, kOne}, {kOne, 0, 0, 0}, {kOne, 16384, 16384, 16384});
  words(JLightenT, {8, kOne, kOne, kOne}, {kOne, 0, 0, 0}, {kOne, 0, 0, 0});
  words(JLightenT, {9, kOne, kOne, kOne}, {kOne, 0, 0, 0}, {kOne, 1, 1, 1});
  words(JLightenT, {kOne, kOne, kOne, kOne}, {kOne, 0, 0, 0}, {kOne, 32760, 32760, 32760});
  words(JLightenT, {16384, kOne, kOne, kOne}, {16384, 0, 0, 0}, {24572, 21838, 21838, 21838});
  words(JLightenT, {kOne, 0, 0, 0}, {30000, 20000, 20000, 20000}, {kOne, 20000, 20000, 20000});
  const auto floats = ExpectGives<PF_PixelFloat>;
  floats(JCompositeT, {0.5f, 1, 1, 1}, {1, 0, 0, 0}, {1, 0.5f, 0.5f, 0.5f});
  floats(JCompositeT, {1.5f, 1, 0, 2}, {1, 0, 0, 0}, {1, 1.5f, 0, 3});
  floats(JLightenT, {1, 0, 0, 0}, {0.5f, 0.4f, 0.4f, 0.4f}, {1, 0.4f, 0.4f, 0.4f});
}

TEST(Transfer, AdaptDepthRoundsEveryByteInEveryChannel) {
  const auto want = [](int in) { return static_cast<std::uint16_t>((in * 32768 + 128) / 255); };
  for (int in = 0; in < 256; ++in) {
    const auto byte = [&](int offset) { return static_cast<std::uint8_t>(in + offset); };
    PF_Pixel16 out{};
    AdaptDepth(PF_Pixel{byte(0), byte(1), byte(100), byte(200)}, out);
    EXPECT_TRUE(Same(out, {want(byte(0)), want(byte(1)), want(byte(100)), want(byte(200))})) << in;
  }
  const int worked[][2] = {{0, 0}, {1, 129}, {127, 16320}, {128, 16448}, {254, 32640}, {255, 32768}};
  for (const auto& [in, out] : worked) EXPECT_EQ(want(in), out);
}

}  // namespace
