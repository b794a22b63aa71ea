// The parameter values of a run: the effect's defaults and what the command line changes of them.
#pragma once

#include <string>
#include <vector>

#include "minihost/parameter_set.h"

namespace cli {

// Parameters that the tool itself has a use for, by their slugs.
inline constexpr char kCompositeWithOriginal[] = "composite-with-original";
inline constexpr char kRandomSeed[] = "random-seed";

/// Each assignment is NAME=VALUE (ParameterNames::Find, ParseValue); later ones win.
/// Throws ToolError(kUsage).
minihost::ParameterSet AssignParameters(minihost::SharedParameterList list,
                                        const std::vector<std::string>& assignments);

}  // namespace cli
