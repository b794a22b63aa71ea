// Integer arithmetic and conversions that have a result for every input.
//
// Times and seeds wrap at 32 bits, as the host's own counters do; C++ leaves signed overflow and conversions
// out of range undefined, so both go through here.
#pragma once

#include <cstdint>

constexpr std::int32_t WrapAdd(std::int32_t a, std::int32_t b) noexcept {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

constexpr std::int32_t WrapSubtract(std::int32_t a, std::int32_t b) noexcept {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

constexpr std::int32_t WrapMultiply(std::int32_t a, std::int32_t b) noexcept {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

/// Rounds toward zero; a value that no int32 holds (NaN included) gives 0.
constexpr std::int32_t TruncateToInt32(double value) noexcept {
  return value > -2147483649.0 && value < 2147483648.0 ? static_cast<std::int32_t>(value) : 0;
}
