// Numbers as users and files write them: digits alone, without blanks or a plus sign.
#pragma once

#include <charconv>
#include <concepts>
#include <optional>
#include <string_view>
#include <system_error>

namespace cli {

/// Takes the number at the front of `rest` off it.  std::errc() when there is one; else result_out_of_range
/// or invalid_argument, and nothing changes.
template <class Number>
std::errc TakeNumber(std::string_view& rest, Number& number) {
  const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
  if (error == std::errc()) {
    rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
  }
  return error;
}

/// All of `text` as a number; empty when it is none, or one that the type cannot hold.
template <class Number>
std::optional<Number> ParseNumber(std::string_view text) {
  Number number{};
  if (TakeNumber(text, number) != std::errc() || !text.empty()) {
    return {};
  }
  return number;
}

/// The same for hexadecimal digits, of either case.
template <std::unsigned_integral Number>
std::optional<Number> ParseHexadecimal(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
  if (error != std::errc() || end != text.data() + text.size()) {
    return {};
  }
  return number;
}

}  // namespace cli
