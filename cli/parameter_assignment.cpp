#include "cli/parameter_assignment.h"

#include <fmt/format.h>

#include <stdexcept>
#include <utility>

#include "cli/parameter_names.h"
#include "cli/parameter_text.h"
#include "cli/tool_error.h"

namespace cli {

minihost::ParameterSet AssignParameters(minihost::SharedParameterList list,
                                        const std::vector<std::string>& assignments) {
  const ParameterNames names(*list);
  minihost::ParameterSet parameters(list);
  for (const std::string& assignment : assignments) {
    const std::size_t equals = assignment.find('=');
    if (equals == assignment.npos) {
      throw ToolError(
          ExitCode::kUsage,
          fmt::format("'{}' sets nothing; write a name, = and a value: Flakes=20000", assignment));
    }
    const minihost::ParameterInfo& parameter = names.Find(std::string_view(assignment).substr(0, equals));
    try {
      parameters.Set(parameter.index, ParseValue(parameter, std::string_view(assignment).substr(equals + 1)));
    } catch (const std::invalid_argument& error) {
      throw ToolError(ExitCode::kUsage, error.what());
    }
  }
  return parameters;
}

}  // namespace cli
