#include "cli/scene/parameter_names.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <stdexcept>

#include "cli/report/error.h"
#include "cli/report/nearest_name.h"

namespace cli {
namespace {

/// The slug of a name, or of a group and a name with the slash kept.
std::string QualifiedSlug(std::string_view text) {
  const std::size_t slash = text.find('/');
  if (slash == text.npos) {
    return Slug(text);
  }
  return Slug(text.substr(0, slash)) + '/' + Slug(text.substr(slash + 1));
}

}  // namespace

std::string Slug(std::string_view name) {
  std::string slug;
  bool gap = false;
  for (const char character : name) {
    const auto letter = static_cast<unsigned char>(character);
    if (!std::isalnum(letter)) {
      gap = true;
      continue;
    }
    if (gap && !slug.empty()) {
      slug += '-';
    }
    gap = false;
    slug += static_cast<char>(std::tolower(letter));
  }
  return slug;
}

ParameterNames::ParameterNames(const minihost::ParameterList& list) {
  for (const minihost::ParameterInfo& parameter : list) {
    if (!parameter.HasValue()) {
      continue;
    }
    const std::string alone = Slug(parameter.DisplayName());
    entries_.push_back({&parameter, alone, Slug(parameter.group) + '/' + alone, true});
  }
  for (Entry& entry : entries_) {
    entry.unique = std::ranges::count(entries_, entry.alone, &Entry::alone) == 1;
  }
}

const minihost::ParameterInfo& ParameterNames::Find(std::string_view text) const {
  const std::string wanted = QualifiedSlug(text);
  std::vector<const Entry*> found;
  std::vector<std::string_view> names;  // two of each entry
  for (const Entry& entry : entries_) {
    if (wanted == entry.alone || wanted == entry.qualified) {
      found.push_back(&entry);
    }
    names.insert(names.end(), {entry.alone, entry.qualified});
  }
  if (found.size() == 1) {
    return *found.front()->parameter;
  }
  if (found.empty()) {
    const auto nearest = NearestName(wanted, names);
    Refuse(ExitCode::kUsage, "there is no parameter '{}'{}; 'vintrel params' lists them", text,
           nearest ? DidYouMean(entries_[*nearest / 2].Shortest()) : "");
  }
  std::string choices;
  for (const Entry* entry : found) {
    choices += fmt::format("{}'{}'", choices.empty() ? "" : " or ", entry->qualified);
  }
  Refuse(ExitCode::kUsage, "more than one parameter is called '{}'; write {}", text, choices);
}

const std::string& ParameterNames::SlugOf(const minihost::ParameterInfo& parameter) const {
  const auto entry = std::ranges::find(entries_, &parameter, &Entry::parameter);
  if (entry == entries_.end()) {
    throw std::invalid_argument("SlugOf: a parameter without a value");
  }
  return entry->Shortest();
}

}  // namespace cli
