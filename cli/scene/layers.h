// What a render is asked for in layers: a preset, a scene file over it, and the command line over both.
#pragma once

#include <string>
#include <vector>

#include "cli/scene/parameter_assignment.h"
#include "cli/scene/presets.h"
#include "cli/scene/scene.h"

namespace cli {

struct SceneLayers {
  std::string preset;                    // its id or name; empty for none
  std::string sceneFile;                 // empty for none
  std::vector<ParameterChange> changes;  // in the order of the command line
};

/// The effect's defaults with the layers on them.  What a later layer says of a parameter replaces all that
/// earlier ones said of it, keys too.  Throws ToolError.
Scene MakeScene(minihost::SharedParameterList list, const Presets& presets, const SceneLayers& layers);

}  // namespace cli
