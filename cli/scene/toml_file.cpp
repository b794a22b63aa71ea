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
// would exhaust the stack.  Brackets are bounded by the parser itself.  Dots in strings and comments count
// with those in keys; this is far more than a scene has, and far from the end of any stack.
constexpr int kMaxDots = 5000;

/// All dots but the first of a word with a digit on either side, as in 0.5.
int DotsOutsideNumbers(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789";
  constexpr std::string_view kBetweenWords = " \t\r\n,=[]{}";
  int dots = 0;
  bool hasDot = false;  // the word so far
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (kBetweenWords.find(text[at]) != text.npos) {
      hasDot = false;
    } else if (text[at] == '.') {
      const bool isDecimal = !hasDot && at > 0 && kDigits.find(text[at - 1]) != text.npos &&
                             at + 1 < text.size() && kDigits.find(text[at + 1]) != text.npos;
      dots += isDecimal ? 0 : 1;
      hasDot = true;
    }
  }
  return dots;
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
  if (DotsOutsideNumbers(text) > kMaxDots) {
    Refuse(ExitCode::kUsage, "{}: has more than {} dots outside of numbers, too many for a scene", name,
           kMaxDots);
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
