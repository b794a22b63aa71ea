#include "cli/check/battery.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "cli/command/commands.h"
#include "cli/report/json.h"
#include "cli/scene/frame_range.h"

namespace cli {
namespace {

using check::LevelReport;

// Levels are listed as frames are.
std::vector<std::int32_t> ListOf(const std::string& text) {
  try {
    return ParseFrames(text);
  } catch (const ToolError&) {
    Refuse(ExitCode::kUsage, "--levels: '{}' is not a list of levels; write them as 1 or 1,3-5", text);
  }
}

std::vector<int> LevelsOf(const std::string& text) {
  std::vector<int> levels;
  if (text.empty()) {
    for (const check::Level& level : check::kLevels) {
      levels.push_back(level.number);
    }
    return levels;
  }
  for (const std::int32_t number : ListOf(text)) {
    const auto isIt = [number](const check::Level& level) { return level.number == number; };
    if (std::ranges::none_of(check::kLevels, isIt)) {
      Refuse(ExitCode::kUsage, "--levels: there is no level {}; they are 1 to {}", number,
             std::size(check::kLevels));
    }
    levels.push_back(number);
  }
  return levels;
}

check::BatteryOrder OrderOf(const CheckOptions& options) {
  check::BatteryOrder order;
  order.levels = LevelsOf(options.levels);
  order.seed = options.seed;
  order.effort = options.isQuick ? check::Effort::kQuick : check::Effort::kFull;
  order.jobs =
      options.jobs > 0 ? options.jobs : static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
  return order;
}

}  // namespace

ExitCode CheckModule(const CheckOptions& options, minihost::EntryPoint ownEffect) {
  const check::BatteryOrder order = OrderOf(options);
  const check::Module module = options.module.empty() ? check::Module{"the effect in the tool", ownEffect}
                                                      : check::OpenModule(options.module);
  std::vector<check::Module> against;
  for (const std::string& file : options.against) {
    against.push_back(check::OpenModule(file));
  }
  if (!options.asJson) {
    PrintToStdout(fmt::format("{}, seed {}\n", module.name, order.seed));
  }
  std::vector<LevelReport> levels;
  const auto began = std::chrono::steady_clock::now();
  check::RunBattery(module, against, order, [&](const LevelReport& level) {
    if (!options.asJson) {
      PrintToStdout(TextOf(level));
    }
    levels.push_back(level);
  });
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
  const bool passed = std::ranges::all_of(levels, &LevelReport::Passed);
  const std::uint64_t faults = check::FaultsIn(levels);
  if (options.asJson) {
    Json list = Json::array();
    for (const LevelReport& level : levels) {
      list.push_back(JsonOf(level));
    }
    PrintToStdout(JsonLine({{"module", module.name},
                            {"seed", order.seed},
                            {"passed", passed},
                            {"faults", faults},
                            {"seconds", Thousandths(seconds)},
                            {"levels", std::move(list)}}));
  } else {
    PrintToStdout(
        fmt::format("{}: {} faults injected, {:.1f} s\n", passed ? "all held" : "FAILED", faults, seconds));
  }
  return passed ? ExitCode::kDone : ExitCode::kFrameFailed;
}

}  // namespace cli
