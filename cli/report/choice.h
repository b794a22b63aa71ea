// Words that stand for the values of an enum.
#pragma once

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "cli/report/error.h"

namespace cli {

/// A table of `count` choices, each with its word.
template <class Choice, std::size_t count>
using Choices = std::pair<Choice, std::string_view>[count];

/// The word of a choice that is in the table.
template <class Choice, std::size_t count>
std::string_view NameOf(const Choices<Choice, count>& choices, Choice choice) {
  return std::ranges::find(choices, choice, &std::pair<Choice, std::string_view>::first)->second;
}

/// The choice that `text` names.  Throws ToolError(kUsage): "'x' is not 8, 16 or float".
template <class Choice, std::size_t count>
Choice ParseChoice(const Choices<Choice, count>& choices, std::string_view text) {
  std::string names;
  for (std::size_t i = 0; i < count; ++i) {
    if (choices[i].second == text) {
      return choices[i].first;
    }
    names += fmt::format("{}{}", i == 0 ? "" : i + 1 == count ? " or " : ", ", choices[i].second);
  }
  Refuse(ExitCode::kUsage, "'{}' is not {}", text, names);
}

}  // namespace cli
