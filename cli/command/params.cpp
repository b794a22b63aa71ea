#include "cli/command/params.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "cli/scene/parameter_names.h"
#include "cli/scene/parameter_text.h"

namespace cli {

std::string ParameterTable(const minihost::ParameterList& list) {
  using Row = std::array<std::string, 8>;
  std::vector<Row> rows{{"#", "Name", "Slug", "Type", "Range", "Default", "Keys", "Group"}};
  const ParameterNames names(list);
  for (const minihost::ParameterInfo& parameter : list) {
    if (!parameter.HasValue()) {
      continue;
    }
    rows.push_back({fmt::format("{}", parameter.index), parameter.DisplayName(), names.SlugOf(parameter),
                    std::string(DescribeType(parameter)), DescribeRange(parameter),
                    FormatValue(parameter, *parameter.defaultValue), parameter.animatable ? "yes" : "no",
                    parameter.group});
  }
  std::array<std::size_t, std::tuple_size_v<Row>> widths{};
  for (const Row& row : rows) {
    for (std::size_t column = 0; column < row.size(); ++column) {
      widths[column] = std::max(widths[column], row[column].size());
    }
  }
  std::string table;
  for (const Row& row : rows) {
    std::string line;
    for (std::size_t column = 0; column < row.size(); ++column) {
      line += fmt::format("{:<{}}  ", row[column], widths[column]);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    table += line + '\n';
  }
  return table;
}

}  // namespace cli
