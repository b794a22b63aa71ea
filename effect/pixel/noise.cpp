#include "effect/pixel/noise.h"

#include <array>
#include <cmath>
#include <new>

#include "effect/pixel/flake_random.h"
#include "effect/pixel/integer.h"
#include "effect/pixel/noise_spline.h"

namespace {

constexpr std::int32_t kKeyScramble = 0x0AB1CEA9;
constexpr std::int32_t kBlendSeed = 137789;

// Truncating remainder, raised once by the modulus where it is negative, in 32 bits.
std::int32_t WrapKey(std::int32_t key, std::int32_t modulus) {
  // A modulus of -1 would overflow for the least key; every remainder by it is 0.  The period and step may
  // multiply to 0, which wraps nothing.
  if (modulus == 0) {
    return key;
  }
  const std::int32_t remainder = modulus == -1 ? 0 : key % modulus;
  return remainder < 0 ? WrapAdd(remainder, modulus) : remainder;
}

float SmoothStep(float t) {
  if (t <= 0.0f) {
    return 0.0f;
  }
  if (t >= 1.0f) {
    return 1.0f;
  }
  return (t * t) * (t * -2.0f + 3.0f);
}

}  // namespace

NoiseValues<float>::~NoiseValues() {
  delete[] table;
}

PF_Err NoiseValues<float>::Allocate(std::uint32_t /*count*/) {
  delete[] table;
  table = new (std::nothrow) float[kEntries];
  return table == nullptr ? PF_Err_OUT_OF_MEMORY : PF_Err_NONE;
}

PF_Err NoiseValues<float>::NoiseTableLin(std::int32_t seed, std::int32_t step, float phase,
                                         std::uint32_t period) {
  if (table == nullptr) {
    if (const PF_Err error = Allocate(kEntries); error != PF_Err_NONE) {
      return error;
    }
  }
  std::array<std::int32_t, 4> keys = {WrapSubtract(seed, step), seed, WrapAdd(seed, step),
                                      WrapAdd(seed, WrapMultiply(2, step))};
  if (period != 0) {
    const std::int32_t modulus = WrapMultiply(step, static_cast<std::int32_t>(period));
    for (std::int32_t& key : keys) {
      key = WrapKey(key, modulus);
    }
  }
  const auto stream = [this](std::int32_t key) {
    return FlakeRandom(WrapAdd(key ^ kKeyScramble, seedOffset));
  };
  std::array<FlakeRandom, 4> streams = {stream(keys[0]), stream(keys[1]), stream(keys[2]), stream(keys[3])};
  FlakeRandom blend(kBlendSeed);

  for (std::int32_t entry = 0; entry < kEntries; ++entry) {
    std::array<float, 4> values;
    for (std::size_t i = 0; i < streams.size(); ++i) {
      values[i] = SignedFractionF(streams[i].Next());
    }
    float t = SignedFractionF(blend.Next()) + phase;
    std::size_t low = 1;
    if (t < 0.0f) {
      t += 1.0f;
      low = 0;
    } else if (t > 1.0f) {
      t -= 1.0f;
      low = 2;
    }
    table[entry] = values[low] + SmoothStep(t) * (values[low + 1] - values[low]);
  }
  return PF_Err_NONE;
}

float NoiseValues<float>::noisebspline(float x) const {
  const float whole = std::floor(x);
  const bool inRange = whole >= -2147483648.0f && whole < 2147483648.0f;
  const std::int32_t i = inRange ? static_cast<std::int32_t>(whole) : 0;
  const float f = inRange ? x - whole : 0.0f;

  const auto entry = [this, i](std::int32_t offset) { return table[NoiseIndex(WrapAdd(i, offset))]; };
  return NoiseSpline(f, entry(-1), entry(0), entry(1), entry(2));
}
