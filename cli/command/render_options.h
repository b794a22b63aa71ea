// What the command line of `vintrel render` says, before anything is checked.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/scene/parameter_assignment.h"

namespace cli {

/// Empty means not given.
struct RenderOptions {
  std::string input;
  std::string blank;
  std::string output;
  std::string preset;
  std::string sceneFile;
  std::vector<ParameterChange> changes;  // --set, --key, --seed and --only-snow, in their order
  std::string frames;
  std::string part;
  std::string fps;
  std::optional<double> shutterDegrees;
  std::string depth;
  std::string alpha;
  std::string compression;
  std::optional<int> proxy;
  std::optional<double> pixelAspect;
  int jobs = 0;
  std::string missing;
  bool keepGoing = false;
  bool resume = false;
  bool dryRun = false;
  std::string saveScene;
  std::string progress;
  bool quiet = false;
};

}  // namespace cli
