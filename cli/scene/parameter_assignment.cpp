#include "cli/scene/parameter_assignment.h"

#include <stdexcept>

#include "cli/report/error.h"
#include "cli/scene/key_text.h"
#include "cli/scene/parameter_names.h"
#include "cli/scene/parameter_text.h"

namespace cli {
namespace {

/// NAME=VALUE, for all time.  Keys that the parameter had are gone.
void Assign(minihost::ParameterSet& parameters, std::string_view assignment) {
  const std::size_t equals = assignment.find('=');
  if (equals == assignment.npos) {
    Refuse(ExitCode::kUsage, "'{}' has no value; write a name, = and a value: Flakes=20000", assignment);
  }
  const minihost::ParameterInfo& parameter =
      ParameterNames(parameters.List()).Find(assignment.substr(0, equals));
  try {
    parameters.Set(parameter.index, ParseValue(parameter, assignment.substr(equals + 1)));
  } catch (const std::invalid_argument& error) {
    Refuse(ExitCode::kUsage, "{}", error.what());
  }
}

}  // namespace

void Apply(minihost::ParameterSet& parameters, const ParameterChange& change) {
  if (change.kind == ParameterChange::Kind::kKeys) {
    AssignKeys(parameters, change.text);
  } else {
    Assign(parameters, change.text);
  }
}

}  // namespace cli
