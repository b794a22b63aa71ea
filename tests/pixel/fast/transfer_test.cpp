// The divisions of the branchless operators; what they are made into stands against the operators where lists
// are blended.
#include "effect/pixel/fast/transfer.h"

#include <gtest/gtest.h>

namespace {

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
