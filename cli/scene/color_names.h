// The names that style sheets have for colors.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace cli {

/// The color as 0xrrggbb; letters of either case.  Empty for any other word.
std::optional<std::uint32_t> NamedColor(std::string_view name);

}  // namespace cli
