#include <fmt/format.h>

#include "cli/command/commands.h"
#include "cli/command/text_table.h"
#include "cli/scene/parameter_names.h"
#include "cli/scene/parameter_text.h"

namespace cli {

std::string ParameterTable(const minihost::ParameterList& list) {
  std::vector<std::vector<std::string>> rows{
      {"#", "Name", "Slug", "Type", "Range", "Default", "Keys", "Group"}};
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
  return FormatTable(rows);
}

}  // namespace cli
