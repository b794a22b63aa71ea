// The effect's random generator.
#pragma once

#include <cstdint>

/// The generator's largest result: Next() gives 0..32767.
inline constexpr std::int32_t kRandomMax = 0x7FFF;

/// A 32-bit linear congruential generator with the multiplier and increment of ISO C's example rand(), which
/// has full period modulo 2^32.  Its low bits are poor, so a result takes the 15 bits above the lower half.
class FlakeRandom {
 public:
  static constexpr std::uint32_t kMultiplier = 1103515245u;
  static constexpr std::uint32_t kIncrement = 12345u;

  /// One step of the recurrence, and the result that its new state gives.
  static constexpr std::uint32_t Step(std::uint32_t state) noexcept {
    return state * kMultiplier + kIncrement;
  }
  static constexpr std::int32_t Result(std::uint32_t state) noexcept {
    return static_cast<std::int32_t>((state >> 16) & std::uint32_t{kRandomMax});
  }

  constexpr explicit FlakeRandom(std::uint32_t seed) noexcept : state_(seed) {}
  constexpr explicit FlakeRandom(std::int32_t seed) noexcept : state_(static_cast<std::uint32_t>(seed)) {}

  /// Advances the state, then reads it: 0..32767.
  constexpr std::int32_t Next() noexcept {
    state_ = Step(state_);
    return Result(state_);
  }

 private:
  std::uint32_t state_;
};

/// A result as a fraction 0..1, both ends included: a product with the double nearest 1/32767.
constexpr double UnitFraction(std::int32_t draw) noexcept {
  return draw * 3.051850947599719e-05;
}

/// A result as -1..1, both ends included: a product with the double nearest 2/32767.
constexpr double SignedFraction(std::int32_t draw) noexcept {
  return draw * 6.103701895199438e-05 - 1.0;
}

/// A result as -1..1 in single precision; the factor is the float nearest 2/32767 (bits 0x38800100).
constexpr float SignedFractionF(std::int32_t draw) noexcept {
  return static_cast<float>(draw) * 6.103702e-5f - 1.0f;
}
