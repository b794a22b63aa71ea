#include "cli/report/nearest_name.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <numeric>
#include <vector>

namespace cli {
namespace {

bool SameLetter(unsigned char a, unsigned char b) {
  return std::tolower(a) == std::tolower(b);
}

/// How many letters to insert, remove or replace to make one word of the other (Levenshtein's distance).
std::size_t EditDistance(std::string_view from, std::string_view to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < from.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < to.size(); ++j) {
      const bool same = SameLetter(static_cast<unsigned char>(from[i]), static_cast<unsigned char>(to[j]));
      const std::size_t replaced = diagonal + (same ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::optional<std::size_t> NearestName(std::string_view typed, std::span<const std::string_view> names) {
  std::optional<std::size_t> nearest;
  std::size_t leastEdits = std::max<std::size_t>(2, typed.size() / 3) + 1;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::size_t edits = EditDistance(typed, names[i]);
    if (edits >= leastEdits) {
      continue;
    }
    leastEdits = edits;
    nearest = i;
  }
  return nearest;
}

std::string DidYouMean(std::string_view name) {
  return fmt::format(" (did you mean '{}'?)", name);
}

std::string SuggestNearest(std::string_view typed, std::span<const std::string_view> names) {
  const auto nearest = NearestName(typed, names);
  return nearest ? DidYouMean(names[*nearest]) : "";
}

}  // namespace cli
