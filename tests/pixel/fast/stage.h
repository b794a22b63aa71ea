// What tests of the fast stages have in common.
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <random>
#include <vector>

#include "effect/pixel/fast/cpu_path.h"
#include "hostapi/worlds.h"

using Depths = testing::Types<PF_Pixel, PF_Pixel16, PF_PixelFloat>;

inline std::vector<CpuPath> SupportedPaths() {
  std::vector<CpuPath> paths(kCpuPaths.begin(), kCpuPaths.end());
  std::erase_if(paths, [](CpuPath path) { return !SupportsCpuPath(path); });
  return paths;
}

/// A number's bits, in double precision so that one type holds them all: 0 and -0 differ, as they may where
/// numbers are compared.  All NaNs are one, because the order of operands decides which comes out.
inline std::uint64_t Bits(double number) {
  return number != number ? ~std::uint64_t{0} : std::bit_cast<std::uint64_t>(number);
}

/// Numbers of 32 bits, the same on every machine.
class Random {
 public:
  explicit Random(std::uint32_t seed) : engine_(seed) {}
  std::uint32_t operator()() { return static_cast<std::uint32_t>(engine_()); }

 private:
  std::mt19937 engine_;
};
