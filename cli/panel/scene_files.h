// Scenes that the page saves.
#pragma once

#include <filesystem>
#include <string_view>

#include "minihost/parameter/info.h"

namespace cli {

enum class WhenThere { kRefuse, kReplace };

/// Writes the text of a scene to a file, relative to the folder that the tool runs in.  The text is read
/// first as any scene file is, and the name has to end in .toml, so that no clip or picture is written over.
///
/// Throws HttpError(409) when the file is there and stays, ToolError(kUsage) for a text that is no scene,
/// with line and column, or a wrong name, and ToolError(kOutput) when it cannot be written.
void SaveSceneText(std::string_view text, const std::filesystem::path& file, WhenThere whenThere,
                   minihost::SharedParameterList list);

}  // namespace cli
