#include "cli/command/text_table.h"

#include <fmt/format.h>

#include <algorithm>

namespace cli {

std::string FormatTable(const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths(rows.empty() ? 0 : rows.front().size());
  for (const auto& row : rows) {
    for (std::size_t column = 0; column < widths.size(); ++column) {
      widths[column] = std::max(widths[column], row.at(column).size());
    }
  }
  std::string table;
  for (const auto& row : rows) {
    std::string line;
    for (std::size_t column = 0; column < widths.size(); ++column) {
      line += fmt::format("{:<{}}  ", row[column], widths[column]);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    table += line + '\n';
  }
  return table;
}

}  // namespace cli
