// What fuzz targets have in common: bytes taken as values, and what becomes of a broken law.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace fuzz {

/// Ends the process, which is how a finding is told to libFuzzer and to the tests alike.
inline void Require(bool holds, std::string_view law) {
  if (!holds) {
    std::cerr << "broken: " << law << '\n';
    std::abort();
  }
}

/// The bytes from front to back; zeros when there are no more.
class Input {
 public:
  Input(const std::uint8_t* bytes, std::size_t size) : next_(bytes), end_(bytes + size) {}

  bool IsEmpty() const { return next_ == end_; }

  template <class Value>
  Value Take() {
    Value value{};
    const std::size_t count = std::min(sizeof value, static_cast<std::size_t>(end_ - next_));
    std::memcpy(&value, next_, count);
    next_ += count;
    return value;
  }

  /// low to low + 255 at most.
  int Between(int low, int high) { return low + Take<std::uint8_t>() % (high - low + 1); }

  template <class Value, std::size_t count>
  const Value& Of(const Value (&values)[count]) {
    return values[Take<std::uint8_t>() % count];
  }

  std::string_view Rest() const {
    return {reinterpret_cast<const char*>(next_), static_cast<std::size_t>(end_ - next_)};
  }

 private:
  const std::uint8_t* next_;
  const std::uint8_t* end_;
};

}  // namespace fuzz
