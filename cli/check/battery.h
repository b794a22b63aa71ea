// `vintrel check`: the whole battery on one effect.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "cli/check/level.h"
#include "cli/check/report.h"

namespace cli::check {

struct BatteryOrder {
  std::vector<int> levels;  // 1 to 10, in their order
  std::uint64_t seed = 1;
  Effort effort = Effort::kFull;
  int jobs = 1;
};

/// Runs the levels on the module, each in a process of its own, and hands each report on in order.  `against`
/// are modules that the pictures are to be equal to.
void RunBattery(const Module& module, const std::vector<Module>& against, const BatteryOrder& order,
                const std::function<void(LevelReport)>& report);

}  // namespace cli::check
