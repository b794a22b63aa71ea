// What a mistyped name was probably meant to be.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace cli {

/// Which of `names` takes the fewest letters inserted, removed or replaced to become what was typed, the
/// first of several; none when all are further than two letters, and further than a third of what was typed.
/// Letters of either case are the same.
std::optional<std::size_t> NearestName(std::string_view typed, std::span<const std::string_view> names);

/// " (did you mean 'shutter'?)".
std::string DidYouMean(std::string_view name);

/// The same with the nearest of `names`, or nothing when none is near.
std::string SuggestNearest(std::string_view typed, std::span<const std::string_view> names);

}  // namespace cli
