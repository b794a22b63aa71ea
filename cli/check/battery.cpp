#include "cli/check/battery.h"

#include <algorithm>

#include "cli/check/children.h"

namespace cli::check {
namespace {

// Ten times what the slowest level takes on a slow machine: longer is a hang.
constexpr std::chrono::seconds kLevelLimit{900};

}  // namespace

void RunBattery(const Module& module, const std::vector<Module>& against, const BatteryOrder& order,
                const std::function<void(LevelReport)>& report) {
  std::vector<ChildOrder> orders;
  for (const Level& level : kLevels) {
    if (std::ranges::find(order.levels, level.number) == order.levels.end()) {
      continue;
    }
    orders.push_back({&level, [&](Tally& tally) {
                        level.run({module, against, order.seed, order.effort, tally});
                      }});
  }
  RunInChildren(orders, order.jobs, kLevelLimit, report);
}

}  // namespace cli::check
