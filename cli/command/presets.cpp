#include "cli/command/commands.h"
#include "cli/command/text_table.h"

namespace cli {

std::string PresetTable(const std::vector<Preset>& presets) {
  std::vector<std::vector<std::string>> rows;
  rows.reserve(presets.size());
  for (const Preset& preset : presets) {
    rows.push_back({preset.id, preset.name, preset.description});
  }
  return FormatTable(rows);
}

}  // namespace cli
