// Rows of text in columns.
#pragma once

#include <string>
#include <vector>

namespace cli {

/// A line for each row, which all have as many columns: each column as wide as its widest text, two blanks
/// between columns, none at the end of a line.
std::string FormatTable(const std::vector<std::vector<std::string>>& rows);

}  // namespace cli
