// What the standard library of the WebAssembly compiler lacks of what the sources use, included before every
// file of that build, so that the sources are the same everywhere.  Each stands in for the function of the
// same name as far as it is used here.  A library that brings its own makes this header fail to compile or
// fall silent: delete it then.
#pragma once

#include <version>

#if defined(_LIBCPP_VERSION) && !defined(__cpp_lib_to_chars)

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <system_error>
#include <type_traits>
#include <utility>

namespace std {

template <class Array>
unique_ptr<Array> make_unique_for_overwrite(size_t size) {
  return unique_ptr<Array>(new remove_extent_t<Array>[size]);
}

/// The fewest significant digits that read back as the same float.  The C library's locale is "C" here.
inline to_chars_result to_chars(char* first, char* last, float value) {
  const auto size = static_cast<size_t>(last - first);
  for (int digits = 1;; ++digits) {
    const int length = snprintf(first, size, "%.*g", digits, static_cast<double>(value));
    if (length < 0 || static_cast<size_t>(length) >= size) {
      return {last, errc::value_too_large};
    }
    if (digits == 9 || strtof(first, nullptr) == value) {
      return {first + length, errc()};
    }
  }
}

/// Decimal numbers, without the words for infinity and not-a-number.
inline from_chars_result from_chars(const char* first, const char* last, double& value) {
  const auto skipDigits = [last](const char* at) {
    while (at != last && *at >= '0' && *at <= '9') {
      ++at;
    }
    return at;
  };
  const char* const whole = first != last && *first == '-' ? first + 1 : first;
  const char* end = skipDigits(whole);
  ptrdiff_t digits = end - whole;
  if (end != last && *end == '.') {
    const char* const fraction = end + 1;
    end = skipDigits(fraction);
    digits += end - fraction;
  }
  if (digits == 0) {
    return {first, errc::invalid_argument};
  }
  const bool isZero = none_of(whole, end, [](char letter) { return letter >= '1' && letter <= '9'; });
  if (end != last && (*end == 'e' || *end == 'E')) {
    const char* const sign = end + 1;
    const char* const exponent = sign != last && (*sign == '-' || *sign == '+') ? sign + 1 : sign;
    const char* const exponentEnd = skipDigits(exponent);
    end = exponentEnd == exponent ? end : exponentEnd;
  }
  const double number = strtod(string(first, end).c_str(), nullptr);
  if (isinf(number) || (number == 0 && !isZero)) {
    return {end, errc::result_out_of_range};
  }
  value = number;
  return {end, errc()};
}

namespace ranges {

template <class Range, class Test, class Projection = std::identity>
constexpr auto find_if(Range&& range, Test test, Projection projection = {}) {
  auto at = std::begin(range);
  while (at != std::end(range) && !std::invoke(test, std::invoke(projection, *at))) {
    ++at;
  }
  return at;
}

template <class Range, class Value, class Projection = std::identity>
constexpr auto find(Range&& range, const Value& value, Projection projection = {}) {
  return ranges::find_if(
      range, [&value](const auto& element) { return element == value; }, projection);
}

template <class Range, class Test>
constexpr bool all_of(const Range& range, Test test) {
  return std::all_of(std::begin(range), std::end(range), test);
}

template <class Range, class Value, class Projection = std::identity>
constexpr ptrdiff_t count(const Range& range, const Value& value, Projection projection = {}) {
  return std::count_if(std::begin(range), std::end(range),
                       [&](const auto& element) { return std::invoke(projection, element) == value; });
}

template <class One, class Other, class Test>
constexpr bool equal(const One& one, const Other& other, Test test) {
  return std::equal(std::begin(one), std::end(one), std::begin(other), std::end(other), test);
}

template <class Range, class Value>
constexpr void replace(Range&& range, const Value& from, const Value& to) {
  std::replace(std::begin(range), std::end(range), from, to);
}

template <class Range, class Less>
constexpr void sort(Range&& range, Less less) {
  std::sort(std::begin(range), std::end(range), less);
}

}  // namespace ranges
}  // namespace std

#endif
