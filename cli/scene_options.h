// The scene that a command line asks for.
#pragma once

#include "cli/render_options.h"
#include "cli/scene.h"
#include "minihost/effect.h"

namespace cli {

/// The layers of the command line, in this order: the effect's defaults, --preset, --scene, --seed and
/// --only-snow,
/// --set, --key, and the options that are not parameters.  Throws ToolError.
Scene SceneOf(const RenderOptions& options, const minihost::Effect& effect);

}  // namespace cli
