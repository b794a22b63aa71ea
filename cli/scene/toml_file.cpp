#include "cli/scene/toml_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <utility>

#include "cli/report/error.h"

namespace cli {
namespace {

// A dotted key opens a table for each of its dots, and tables are freed by recursion: a file that is all dots
// would exhaust the stack.  Brackets are bounded by the parser itself.
constexpr int kMaxDotsInKey = 32;

/// Past the string that begins at `begin`, of any of the four kinds.
std::size_t EndOfString(std::string_view text, std::size_t begin) {
  const char quote = text[begin];
  const std::string_view fence = quote == '"' ? "\"\"\"" : "'''";
  const bool fenced = text.substr(begin).starts_with(fence);
  for (std::size_t at = begin + (fenced ? fence.size() : 1); at < text.size(); ++at) {
    if (text[at] == '\\' && quote == '"') {
      ++at;
    } else if (fenced && text.substr(at).starts_with(fence)) {
      // Up to two quotes before the closing fence belong to the string.
      return std::min({at + 2 * fence.size() - 1, text.find_first_not_of(quote, at), text.size()});
    } else if (!fenced && (text[at] == quote || text[at] == '\n')) {
      return at + 1;
    }
  }
  return text.size();
}

/// Counts the dots between any two of the marks that end a key, outside of strings and comments.
bool HasDeepKey(std::string_view text) {
  int dots = 0;
  for (std::size_t at = 0; at < text.size();) {
    const char letter = text[at];
    if (letter == '"' || letter == '\'') {
      at = EndOfString(text, at);
    } else if (letter == '#') {
      at = std::min(text.find('\n', at), text.size());
    } else {
      if (letter == '.' && ++dots > kMaxDotsInKey) {
        return true;
      }
      if (std::string_view("\n=,[]{}").find(letter) != std::string_view::npos) {
        dots = 0;
      }
      ++at;
    }
  }
  return false;
}

}  // namespace

toml::table ReadTomlFile(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::string text(kMaxTomlBytes + 1, '\0');
  if (stream) {
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  }
  if (!stream.eof() && stream.gcount() != static_cast<std::streamsize>(text.size())) {
    Refuse(ExitCode::kInput, "cannot read scene '{}': {}", file.string(), std::strerror(errno));
  }
  text.resize(static_cast<std::size_t>(stream.gcount()));
  return ParseToml(text, file.string());
}

toml::table ParseToml(std::string_view text, std::string_view name) {
  if (text.size() > kMaxTomlBytes) {
    Refuse(ExitCode::kUsage, "{}: is longer than {} bytes, too long for a scene", name, kMaxTomlBytes);
  }
  if (HasDeepKey(text)) {
    Refuse(ExitCode::kUsage, "{}: has a key of more than {} parts, and a scene's have two at most", name,
           kMaxDotsInKey);
  }
  try {
    return toml::parse(text, name);
  } catch (const toml::parse_error& error) {
    RefuseAt(error.source(), "{}", error.description());
  }
}

std::string PlaceOf(const toml::source_region& region) {
  return fmt::format("{}:{}:{}", region.path ? *region.path : "", region.begin.line, region.begin.column);
}

std::string_view DescribeNode(const toml::node& node) {
  switch (node.type()) {
    case toml::node_type::table:
      return "a table";
    case toml::node_type::array:
      return "an array";
    case toml::node_type::string:
      return "a string";
    case toml::node_type::integer:
      return "an integer";
    case toml::node_type::floating_point:
      return "a number";
    case toml::node_type::boolean:
      return "a boolean";
    default:
      return "a date or time";
  }
}

std::vector<TomlEntry> EntriesOf(const toml::table& table) {
  std::vector<TomlEntry> entries;
  for (const auto& [key, value] : table) {
    entries.push_back({&key, &value});
  }
  std::ranges::sort(entries, [](const TomlEntry& one, const TomlEntry& other) {
    const auto& a = one.key->source().begin;
    const auto& b = other.key->source().begin;
    return std::pair(a.line, a.column) < std::pair(b.line, b.column);
  });
  return entries;
}

}  // namespace cli
