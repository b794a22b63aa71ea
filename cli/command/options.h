// The command line of the tool, before anything is checked but that it can be read.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/scene/parameter_assignment.h"

namespace CLI {
class App;
}  // namespace CLI

namespace cli {

/// What `vintrel render` and `vintrel sheet` are asked for.  Empty means not given.
struct ShotOptions {
  std::string input;                 // -i
  std::array<std::string, 2> files;  // without an option: the input when -i did not name it, then the output
  std::string blank;
  std::string output;
  std::string preset;
  std::string sceneFile;
  std::vector<ParameterChange> changes;  // --set, --key, --seed and --only-snow, in their order
  std::string frames;
  std::string part;
  std::string fps;
  bool retime = false;
  std::optional<double> shutterDegrees;
  std::string depth;
  std::string alpha;
  std::string compression;
  std::string codec;
  std::optional<int> quality;
  std::string sound;
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
  bool noOverwrite = false;
  bool overwrite = false;  // as it is without
};

/// What `vintrel panel` is asked for.
struct PanelOptions {
  std::string input;
  std::string sceneFile;
  int port = 0;  // 0: any free one
  bool noBrowser = false;
};

/// What `vintrel check` is asked for.
struct CheckOptions {
  std::string module;  // empty: the effect that is part of the tool
  std::vector<std::string> against;
  std::string levels;
  std::uint64_t seed = 1;
  bool isQuick = false;
  bool asJson = false;
  int jobs = 0;
};

struct CommandLine {
  ShotOptions shot;
  PanelOptions panel;
  CheckOptions check;
  int sheetCells = 12;
  std::string infoFile;
  bool infoAsJson = false;
};

/// A parser for every command, filling `line`, which must outlive it.  After parsing, `got_subcommand` tells
/// the command: "render", "sheet", "panel", "info", "params", "presets", "check" or "about"; there is exactly
/// one.
std::shared_ptr<CLI::App> MakeParser(CommandLine& line);

}  // namespace cli
