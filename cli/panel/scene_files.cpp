#include "cli/panel/scene_files.h"

#include <fmt/format.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "cli/file/extension.h"
#include "cli/file/pending_file.h"
#include "cli/panel/http.h"
#include "cli/report/error.h"
#include "cli/scene/reader.h"

namespace cli {

void SaveSceneText(std::string_view text, const std::filesystem::path& file, WhenThere whenThere,
                   minihost::SharedParameterList list) {
  if (LowerExtension(file) != ".toml") {
    Refuse(ExitCode::kUsage, "'{}' does not end in .toml, as the name of a scene has to", file.string());
  }
  Scene scene(std::move(list));
  ApplySceneText(text, file.filename().string(), scene);
  CheckWritable(file);
  std::error_code error;
  if (whenThere == WhenThere::kRefuse &&
      std::filesystem::exists(std::filesystem::symlink_status(file, error))) {
    throw HttpError(409, fmt::format("'{}' is there already", file.string()));
  }
  WriteWhole(file, std::vector<std::uint8_t>(text.begin(), text.end()));
}

}  // namespace cli
