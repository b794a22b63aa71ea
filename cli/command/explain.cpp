#include "cli/command/explain.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>
#include <vector>

#include "cli/command/foreign_options.h"
#include "cli/report/nearest_name.h"
#include "cli/scene/parameter_names.h"

namespace cli {
namespace {

/// "--fps: 1 required RATE missing", of options that all take one value, in the words of the others.
std::string ExplainMismatch(std::string_view what) {
  const std::string_view option = what.substr(0, what.find(':'));
  return fmt::format("{} {}", option,
                     what.ends_with(" missing") ? "needs a value" : "is given more than once");
}

bool IsParameter(const std::string& slug, const minihost::ParameterList& parameters) {
  return std::ranges::any_of(parameters, [&](const minihost::ParameterInfo& parameter) {
    return parameter.HasValue() && Slug(parameter.DisplayName()) == slug;
  });
}

}  // namespace

std::string ExplainForeign(const CLI::App& app, const std::vector<std::string>& arguments) {
  const auto commands = app.get_subcommands([&](const CLI::App* command) {
    return !arguments.empty() && command->get_name() == arguments[0] &&
           command->get_option_no_throw("--frames") != nullptr;
  });
  if (commands.empty()) {
    return {};
  }
  for (const std::string& word : arguments) {
    if (word == "--") {
      break;
    }
    const std::string instead = word.starts_with('-') ? InPlaceOf(word) : "";
    if (!instead.empty() && commands[0]->get_option_no_throw(word.substr(0, word.find('='))) == nullptr) {
      return fmt::format("unknown option '{}'; {}", word, instead);
    }
  }
  return {};
}

std::string Explain(const CLI::App& app, const CLI::ParseError& error,
                    const minihost::ParameterList& parameters) {
  std::vector<std::string> unknown = app.remaining(true);
  std::erase(unknown, "--");
  const auto used = app.get_subcommands();
  const std::string help =
      fmt::format("see: vintrel {}--help", used.empty() ? "" : used[0]->get_name() + ' ');
  if (unknown.empty() && used.empty()) {
    return "no command; begin with: vintrel render photo.png -o snow.png, or see: vintrel --help";
  }
  if (unknown.empty()) {
    const bool isMismatch = dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr;
    return fmt::format("{}; {}", isMismatch ? ExplainMismatch(error.what()) : error.what(), help);
  }
  // After "--" the name of an option is an argument like any other.
  const bool isOption =
      !used.empty() && unknown[0].starts_with('-') && used[0]->get_option_no_throw(unknown[0]) == nullptr;
  const std::string slug = Slug(unknown[0].substr(0, unknown[0].find('=')));
  if (isOption && IsParameter(slug, parameters)) {
    return fmt::format("unknown option '{}'; '{}' is a parameter: write --set {}=VALUE", unknown[0], slug,
                       slug);
  }
  std::vector<std::string> names;
  if (used.empty()) {
    for (const CLI::App* command : app.get_subcommands({})) {
      names.push_back(command->get_name());
    }
  } else if (isOption) {
    for (const CLI::Option* option : used[0]->get_options()) {
      names.push_back(option->get_name());
    }
  }
  if (used.empty() && unknown[0].find_first_of("-./") != std::string::npos) {
    return fmt::format("'{}' stands where the command should; write: vintrel render {} ...", unknown[0],
                       unknown[0]);
  }
  const std::string suggestion =
      SuggestNearest(unknown[0], std::vector<std::string_view>(names.begin(), names.end()));
  if (used.empty()) {
    return fmt::format("unknown command '{}'{}; {}", unknown[0], suggestion, help);
  }
  if (!isOption && used[0]->get_option_no_throw("--frames") != nullptr) {
    return fmt::format(
        "unexpected argument '{}': one input at a time goes into one output; numbered pictures are one, "
        "as plate.####.png",
        unknown[0]);
  }
  return fmt::format("{} '{}'{}; {}", isOption ? "unknown option" : "unexpected argument", unknown[0],
                     suggestion, help);
}

}  // namespace cli
