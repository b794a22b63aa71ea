// The levels of the battery: each a function that tries something out and keeps a tally.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "cli/check/subject.h"
#include "cli/check/tally.h"

namespace cli::check {

enum class Effort {
  kFull,
  kQuick,  // fewer random tries; what is walked through is walked through whole
};

struct LevelTask {
  const Module& module;
  std::span<const Module> against;  // other builds of the same effect
  std::uint64_t seed;
  Effort effort;
  Tally& tally;

  /// Random tries.
  std::uint64_t Tries(std::uint64_t full) const { return effort == Effort::kFull ? full : full / 20; }
};

void CheckFaults(const LevelTask& task);
void CheckOrder(const LevelTask& task);
void CheckState(const LevelTask& task);
void CheckGeometry(const LevelTask& task);
void CheckValues(const LevelTask& task);
void CheckInterruption(const LevelTask& task);
void CheckAmbientState(const LevelTask& task);
void CheckSameness(const LevelTask& task);
void CheckEndurance(const LevelTask& task);
void CheckDeclarations(const LevelTask& task);

struct Level {
  int number;
  std::string_view name;
  void (*run)(const LevelTask& task);
};

inline constexpr Level kLevels[] = {
    {1, "faults", CheckFaults},
    {2, "order", CheckOrder},
    {3, "state", CheckState},
    {4, "geometry", CheckGeometry},
    {5, "values", CheckValues},
    {6, "interruption", CheckInterruption},
    {7, "ambient state", CheckAmbientState},
    {8, "sameness", CheckSameness},
    {9, "endurance", CheckEndurance},
    {10, "declarations", CheckDeclarations},
};

}  // namespace cli::check
