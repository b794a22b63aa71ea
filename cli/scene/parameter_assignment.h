// Parameters as the command line changes them, one change after the other.
#pragma once

#include <string>

#include "minihost/parameter/set.h"

namespace cli {

// Parameters that the tool itself has a use for, by their slugs.
inline constexpr char kCompositeWithOriginal[] = "composite-with-original";
inline constexpr char kTransferMode[] = "transfer-mode";
inline constexpr char kRandomSeed[] = "random-seed";

/// What one option of the command line does to a parameter.
struct ParameterChange {
  enum class Kind { kValue, kKeys };
  Kind kind = Kind::kValue;
  std::string text;  // NAME=VALUE (ParameterNames::Find, ParseValue), or as AssignKeys reads it
};

/// Replaces all that was said of the parameter before, keys too.  Throws ToolError(kUsage); then nothing
/// changes.
void Apply(minihost::ParameterSet& parameters, const ParameterChange& change);

}  // namespace cli
