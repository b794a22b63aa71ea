// What a mistyped name was probably meant to be.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace cli {

/// " (did you mean 'shutter'?)" with the nearest of `names`, or nothing when none is near: further than two
/// letters, and further than a third of what was typed.  Letters of either case are the same.
std::string SuggestNearest(std::string_view typed, std::span<const std::string_view> names);

}  // namespace cli
