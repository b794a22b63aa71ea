// Parameter values as the command line changes them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "minihost/parameter_set.h"

namespace cli {

// Parameters that the tool itself has a use for, by their slugs.
inline constexpr char kCompositeWithOriginal[] = "composite-with-original";
inline constexpr char kRandomSeed[] = "random-seed";

/// Sets one parameter for all time: NAME=VALUE (ParameterNames::Find, ParseValue).  Keys that it had are
/// gone. Throws ToolError(kUsage); then nothing changes.
void Assign(minihost::ParameterSet& parameters, std::string_view assignment);

/// The effect's defaults with these assignments; later ones win.  Throws ToolError(kUsage).
minihost::ParameterSet AssignParameters(minihost::SharedParameterList list,
                                        const std::vector<std::string>& assignments);

}  // namespace cli
