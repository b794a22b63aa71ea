#include "cli/check/report.h"

#include <fmt/format.h>

#include <algorithm>

namespace cli::check {

bool LevelReport::Passed() const {
  const auto holds = [](const CheckResult& check) { return check.failed == 0; };
  return broken.empty() && std::ranges::all_of(checks, holds);
}

std::string TextOf(const LevelReport& level) {
  std::string text = fmt::format("level {}: {}, {:.1f} s\n", level.number, level.name, level.seconds);
  for (const CheckResult& check : level.checks) {
    const char* const verdict = check.failed != 0 ? "FAIL" : check.tried == 0 ? "none" : "PASS";
    text += fmt::format("  {}  {}: {} {}\n", verdict, check.name, check.tried, check.unit);
    if (check.failed != 0) {
      text += fmt::format("        {} of them failed; the first: {}\n", check.failed, check.counterexample);
    }
    if (!check.note.empty()) {
      text += fmt::format("        {}\n", check.note);
    }
  }
  if (!level.broken.empty()) {
    text += fmt::format("  FAIL  {}\n", level.broken);
  }
  return text;
}

Json JsonOf(const std::vector<CheckResult>& checks) {
  Json list = Json::array();
  for (const CheckResult& check : checks) {
    list.push_back({{"name", check.name},
                    {"unit", check.unit},
                    {"tried", check.tried},
                    {"failed", check.failed},
                    {"counterexample", check.counterexample},
                    {"note", check.note}});
  }
  return list;
}

std::vector<CheckResult> ChecksOf(const Json& json) {
  std::vector<CheckResult> checks;
  for (const Json& check : json) {
    checks.push_back({.name = check.at("name"),
                      .unit = check.at("unit"),
                      .tried = check.at("tried"),
                      .failed = check.at("failed"),
                      .counterexample = check.at("counterexample"),
                      .note = check.at("note")});
  }
  return checks;
}

Json JsonOf(const LevelReport& level) {
  return {{"level", level.number},    {"name", level.name},
          {"passed", level.Passed()}, {"seconds", Thousandths(level.seconds)},
          {"broken", level.broken},   {"checks", JsonOf(level.checks)}};
}

std::uint64_t FaultsIn(const std::vector<LevelReport>& levels) {
  std::uint64_t faults = 0;
  for (const LevelReport& level : levels) {
    for (const CheckResult& check : level.checks) {
      faults += check.unit == kFaultUnit ? check.tried : 0;
    }
  }
  return faults;
}

}  // namespace cli::check
