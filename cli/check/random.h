// Random numbers that are the same from machine to machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace cli::check {

/// A 64-bit counter, scrambled (splitmix64).  Every seed is as good as another.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint64_t Next() {
    std::uint64_t z = state_ += 0x9E3779B97F4A7C15u;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
  }

  /// 0 to `count` - 1.
  std::uint64_t Below(std::uint64_t count) { return Next() % count; }
  bool OneIn(std::uint64_t count) { return Below(count) == 0; }

  /// low to high, both included.
  int Between(int low, int high) {
    return low + static_cast<int>(Below(static_cast<std::uint64_t>(high - low) + 1));
  }
  double Real(double low, double high) {
    return low + (high - low) * (static_cast<double>(Next() >> 11) * 0x1p-53);
  }

  template <class Value, std::size_t count>
  Value Of(const Value (&values)[count]) {
    return values[Below(count)];
  }

 private:
  std::uint64_t state_;
};

}  // namespace cli::check
