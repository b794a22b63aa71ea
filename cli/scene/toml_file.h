// TOML text from anywhere, read within bounds, and its errors with their places.
#pragma once

#include <fmt/format.h>
#include <toml++/toml.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/report/error.h"

namespace cli {

inline constexpr std::size_t kMaxTomlBytes = 1 << 20;

/// Throws ToolError(kInput) when the file cannot be read, and what ParseToml throws.
toml::table ReadTomlFile(const std::filesystem::path& file);

/// `name` stands for the file in messages.  Throws ToolError(kUsage) for what is not TOML in UTF-8, for more
/// than kMaxTomlBytes and for nesting that no file of ours needs.
toml::table ParseToml(std::string_view text, std::string_view name);

/// "snow.toml:3:11".
std::string PlaceOf(const toml::source_region& region);

/// Refuses with kUsage and the place before the message.
template <class... Arguments>
[[noreturn]] void RefuseAt(const toml::source_region& region, fmt::format_string<Arguments...> text,
                           Arguments&&... arguments) {
  Refuse(ExitCode::kUsage, "{}: {}", PlaceOf(region),
         fmt::format(text, std::forward<Arguments>(arguments)...));
}

/// Runs `task`, and puts the place before what it refuses.
template <class Task>
decltype(auto) At(const toml::source_region& region, Task&& task) {
  return About(PlaceOf(region), std::forward<Task>(task));
}

/// "an integer", "a table" and so on.
std::string_view DescribeNode(const toml::node& node);

struct TomlEntry {
  const toml::key* key;
  const toml::node* value;
};

/// In the order of the file.  The table must outlive them.
std::vector<TomlEntry> EntriesOf(const toml::table& table);

}  // namespace cli
