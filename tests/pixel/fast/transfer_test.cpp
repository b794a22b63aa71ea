// The branchless operators against the operators themselves.
#include "effect/pixel/fast/transfer.h"

#include <gtest/gtest.h>

#include <vector>

#include "effect/pixel/transfer.h"

namespace {

template <class T>
WidePixel Widen(const T& pixel) {
  return {pixel.alpha, pixel.red, pixel.green, pixel.blue};
}

// Three of the values at a time, as channels of both pixels.
template <class T, class Value, class Operator, class Branchless>
void ExpectEqual(const std::vector<Value>& alphas, const std::vector<Value>& channels, Operator op,
                 Branchless branchless) {
  const std::size_t count = channels.size();
  for (const Value topAlpha : alphas) {
    for (const Value bottomAlpha : alphas) {
      for (std::size_t t = 0; t < count; ++t) {
        for (std::size_t b = 0; b < count; b += 3) {
          const T top = {topAlpha, channels[t], channels[t], channels[t]};
          const T bottom = {bottomAlpha, channels[b], channels[(b + 1) % count], channels[(b + 2) % count]};
          T expected = bottom;
          op(&top, &expected, expected);
          const WidePixel got = branchless(Widen(top), Widen(bottom));
          ASSERT_TRUE(got.alpha == expected.alpha && got.red == expected.red && got.green == expected.green &&
                      got.blue == expected.blue)
              << "top " << +topAlpha << ' ' << +channels[t] << ", bottom " << +bottomAlpha << ' '
              << +channels[b];
        }
      }
    }
  }
}

TEST(BranchlessTransfer, EqualsTheOperators) {
  std::vector<std::uint8_t> alphas8;
  std::vector<std::uint8_t> channels8;
  for (int v = 0; v < 256; ++v) {
    alphas8.push_back(static_cast<std::uint8_t>(v));
    if (v % 17 == 0 || v < 3 || v > 252) {
      channels8.push_back(static_cast<std::uint8_t>(v));
    }
  }
  ExpectEqual<PF_Pixel>(alphas8, channels8, JCompositeT<PF_Pixel>, branchless::Composite8);
  ExpectEqual<PF_Pixel>(alphas8, channels8, JLightenT<PF_Pixel>, branchless::Lighten8);

  std::vector<std::uint16_t> alphas16 = {0, 1, 7, 8, 9, 10, 28672, 28673, 32759, 32760, 32761, 32767, 32768};
  std::vector<std::uint16_t> channels16 = alphas16;
  std::uint32_t state = 1;
  for (int i = 0; i < 60; ++i) {
    state = state * 1664525u + 1013904223u;
    alphas16.push_back(static_cast<std::uint16_t>((state >> 16) % 32769));
    state = state * 1664525u + 1013904223u;
    channels16.push_back(static_cast<std::uint16_t>((state >> 16) % 32769));
  }
  ExpectEqual<PF_Pixel16>(alphas16, channels16, JCompositeT<PF_Pixel16>, branchless::Composite16);
  ExpectEqual<PF_Pixel16>(alphas16, channels16, JLightenT<PF_Pixel16>, branchless::Lighten16);
}

// Around every multiple of every divisor, where a quotient changes.
TEST(BranchlessTransfer, DividesExactly) {
  for (std::int32_t divisor = 1; divisor < 256; ++divisor) {
    const Divisor8 divide(divisor);
    for (std::int32_t numerator = 0; numerator < 256 * divisor; ++numerator) {
      ASSERT_EQ(divide(numerator), numerator / divisor) << numerator << " / " << divisor;
    }
  }
  for (std::int32_t divisor = 1; divisor <= 32768; divisor += divisor < 300 ? 1 : 97) {
    const Divisor16 divide(divisor);
    for (std::int32_t quotient = 0; quotient <= 32768; quotient += quotient < 64 ? 1 : 113) {
      for (const std::int32_t numerator :
           {quotient * divisor - 1, quotient * divisor, quotient * divisor + 1}) {
        if (numerator >= 0 && numerator <= 1 << 30) {
          ASSERT_EQ(divide(numerator), numerator / divisor) << numerator << " / " << divisor;
        }
      }
    }
  }
}

}  // namespace
