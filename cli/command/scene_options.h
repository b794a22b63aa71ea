// The scene that a command line asks for.
#pragma once

#include "cli/command/render_options.h"
#include "cli/scene/scene.h"
#include "minihost/effect.h"

namespace cli {

/// The layers of the command line: the effect's defaults, --preset, --scene, the changes of parameters in
/// the order in which they were written, and the other options.  Throws ToolError.
Scene SceneOf(const RenderOptions& options, const minihost::Effect& effect);

}  // namespace cli
