// The [parameters] of a scene file.
#pragma once

#include <toml++/toml.h>

#include "minihost/parameter/set.h"

namespace cli {

/// More keys than this in one scene are taken for a mistake.
inline constexpr std::size_t kMaxSceneKeys = 100'000;

/// Sets what the section speaks of and keeps the rest.  Throws ToolError(kUsage) with the place: for unknown
/// names, two names of one parameter, values of the wrong type or out of range, and keys that cannot be.
/// `parameters` may then be half changed.
void ApplyParameters(const toml::table& section, minihost::ParameterSet& parameters);

}  // namespace cli
