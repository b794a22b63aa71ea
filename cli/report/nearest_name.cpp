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

}  // namespace

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

std::string SuggestNearest(std::string_view typed, std::span<const std::string_view> names) {
  std::string_view nearest;
  std::size_t leastEdits = std::max<std::size_t>(2, typed.size() / 3) + 1;
  for (const std::string_view name : names) {
    const std::size_t edits = EditDistance(typed, name);
    if (edits >= leastEdits) {
      continue;
    }
    leastEdits = edits;
    nearest = name;
  }
  return nearest.empty() ? "" : fmt::format(" (did you mean '{}'?)", nearest);
}

}  // namespace cli
