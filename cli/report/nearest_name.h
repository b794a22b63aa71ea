// What a mistyped name was probably meant to be.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace cli {

/// How many letters to insert, remove or replace to make one word of the other (Levenshtein's distance),
/// letters of either case the same.
std::size_t EditDistance(std::string_view from, std::string_view to);

/// " (did you mean 'shutter'?)" with the nearest of `names`, or nothing when none is near: further than two
/// letters, and further than a third of what was typed.  Letters of either case are the same.
std::string SuggestNearest(std::string_view typed, std::span<const std::string_view> names);

}  // namespace cli
