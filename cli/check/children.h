// Levels in processes of their own, so that what ends one is a finding and not the end.
#pragma once

#include <chrono>
#include <functional>
#include <span>

#include "cli/check/level.h"
#include "cli/check/report.h"

namespace cli::check {

struct ChildOrder {
  const Level* level;
  /// Runs in the child.
  std::function<void(Tally&)> work;
};

/// Runs them, `jobs` at a time, and hands each report on in the order of the list.  A child that crashes,
/// throws or takes longer than `limit` is reported so, with the check and the try that it was at.
void RunInChildren(std::span<const ChildOrder> orders, int jobs, std::chrono::seconds limit,
                   const std::function<void(LevelReport)>& report);

}  // namespace cli::check
