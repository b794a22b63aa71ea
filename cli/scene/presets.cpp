#include "cli/scene/presets.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "cli/report/error.h"
#include "cli/report/nearest_name.h"
#include "cli/scene/parameter_names.h"
#include "cli/scene/reader.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

// The tool may be installed anywhere, and moved as a whole, so its own place tells where its presets are.
fs::path FolderOfTool() {
  std::error_code error;
  const fs::path tool = fs::read_symlink("/proc/self/exe", error);
  fs::path installed = (tool.parent_path() / VINTREL_PRESETS_FROM_TOOL).lexically_normal();
  if (!error && fs::is_directory(installed, error)) {
    return installed;
  }
  return VINTREL_PRESETS_OF_SOURCES;
}

// Empty without a home.
fs::path FolderOfUser() {
  const char* config = std::getenv("XDG_CONFIG_HOME");
  if (config != nullptr && *config == '/') {
    return fs::path(config) / "vintrel" / "presets";
  }
  const char* home = std::getenv("HOME");
  return home != nullptr && *home != '\0' ? fs::path(home) / ".config" / "vintrel" / "presets" : fs::path();
}

}  // namespace

Presets Presets::OfTool() {
  Presets presets(FolderOfTool());
  if (const fs::path own = FolderOfUser(); !own.empty()) {
    presets.AddScenes(own);
  }
  return presets;
}

void Presets::AddScenes(const fs::path& folder) {
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    if (entry.path().extension() != ".toml") {
      continue;
    }
    const std::string id = entry.path().stem().string();
    Preset preset{id, id, entry.path().string(), entry.path()};
    // A scene that was saved here has no label, and one that is faulty is told of when it is asked for.
    try {
      const PresetLabel label = ReadPresetLabel(entry.path());
      preset.name = label.name;
      preset.description = label.description;
    } catch (const ToolError&) {
      preset.name = id;
    }
    std::erase_if(presets_, [&](const Preset& other) { return other.id == id; });
    presets_.push_back(std::move(preset));
  }
  std::ranges::sort(presets_, {}, &Preset::id);
}

fs::path Presets::FileOf(std::string_view text) const {
  const bool isFile = text.find('/') != text.npos || text.ends_with(".toml");
  return isFile ? fs::path(text) : Find(text).file;
}

Presets::Presets(const fs::path& folder) {
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    if (entry.path().extension() != ".toml") {
      continue;
    }
    const PresetLabel label = ReadPresetLabel(entry.path());
    presets_.push_back({entry.path().stem().string(), label.name, label.description, entry.path()});
  }
  std::ranges::sort(presets_, {}, &Preset::id);
}

const Preset& Presets::Find(std::string_view text) const {
  const std::string wanted = Slug(text);
  std::vector<std::string_view> ids;
  for (const Preset& preset : presets_) {
    if (wanted == Slug(preset.id) || wanted == Slug(preset.name)) {
      return preset;
    }
    ids.push_back(preset.id);
  }
  Refuse(ExitCode::kUsage, "there is no preset '{}'{}; there {}", text, SuggestNearest(text, ids),
         ids.empty() ? "are none" : fmt::format("are {}", fmt::join(ids, ", ")));
}

}  // namespace cli
