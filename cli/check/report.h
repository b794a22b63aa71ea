// What came of a level, for people and for programs.
#pragma once

#include <string>
#include <vector>

#include "cli/check/tally.h"
#include "cli/report/json.h"

namespace cli::check {

struct LevelReport {
  int number = 0;
  std::string name;
  std::vector<CheckResult> checks;
  std::string broken;  // how its process ended before its time, and where; empty when it did not
  double seconds = 0;

  bool Passed() const;
};

/// A line for each check below one for the level.
std::string TextOf(const LevelReport& level);
Json JsonOf(const LevelReport& level);

/// The checks as JsonOf writes them: what a level's process tells the other one.
Json JsonOf(const std::vector<CheckResult>& checks);
std::vector<CheckResult> ChecksOf(const Json& json);

/// Faults that were injected by all of them.
std::uint64_t FaultsIn(const std::vector<LevelReport>& levels);
inline constexpr std::string_view kFaultUnit = "faults";

}  // namespace cli::check
