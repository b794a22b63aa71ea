// Looks to begin with: scene files that set parameters alone.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "cli/scene/scene.h"

namespace cli {

struct Preset {
  std::string id;  // what it is asked for by: its file's name without .toml
  std::string name;
  std::string description;  // one line; of the user's own, the file when it says nothing
  std::filesystem::path file;
};

class Presets {
 public:
  /// Those that come with the tool, from where it was installed to, else from its sources; and the scene
  /// files in the user's own folder, $XDG_CONFIG_HOME/vintrel/presets, one of which takes the place of a
  /// preset with its id.
  static Presets OfTool();

  /// The presets among the .toml files of a folder; none without the folder.  Throws ToolError for files that
  /// are not presets.
  explicit Presets(const std::filesystem::path& folder);

  /// In the order of their ids.
  const std::vector<Preset>& All() const { return presets_; }

  /// By id or name, letters of either case.  Throws ToolError(kUsage) with the nearest known one.
  const Preset& Find(std::string_view text) const;

  /// The same preset's file; or a scene file, when the text has a slash in it or ends in .toml.
  std::filesystem::path FileOf(std::string_view text) const;

 private:
  void AddScenes(const std::filesystem::path& folder);

  std::vector<Preset> presets_;
};

}  // namespace cli
