// A batch of values, one lane each, for loops that the compiler turns into vectors.
#pragma once

#include <array>
#include <cstddef>

/// Flakes in a batch: the interval between two reports of progress.
inline constexpr std::size_t kLanes = 128;

/// As wide in memory as the widest vectors want it.
template <class Value>
struct alignas(64) Lanes : std::array<Value, kLanes> {};
