// Parameters as the command line changes them, one change after the other.
#pragma once

#include <string>
#include <string_view>

#include "minihost/parameter/set.h"

namespace cli {

// Parameters that the tool itself has a use for, by their slugs.
inline constexpr char kCompositeWithOriginal[] = "composite-with-original";
inline constexpr char kRandomSeed[] = "random-seed";

/// Sets one parameter for all time: NAME=VALUE (ParameterNames::Find, ParseValue).  Keys that it had are
/// gone. Throws ToolError(kUsage); then nothing changes.
void Assign(minihost::ParameterSet& parameters, std::string_view assignment);

/// What one option of the command line does to a parameter.
struct ParameterChange {
  enum class Kind { kValue, kKeys };
  Kind kind = Kind::kValue;
  std::string text;  // as Assign or AssignKeys (cli/key_text.h) reads it
};

/// Replaces all that was said of the parameter before, keys too.  Throws ToolError(kUsage); then nothing
/// changes.
void Apply(minihost::ParameterSet& parameters, const ParameterChange& change);

}  // namespace cli
