// The scene that a command line asks for.
#pragma once

#include "cli/command/render_options.h"
#include "cli/run/pipeline.h"
#include "cli/scene/scene.h"
#include "minihost/effect.h"

namespace cli {

/// The layers of the command line: the effect's defaults, --preset, --scene, the changes of parameters in
/// the order in which they were written, and the other options.  Throws ToolError.
Scene SceneOf(const RenderOptions& options, const minihost::Effect& effect);

/// How the frames are done: --jobs and --missing.  Throws ToolError(kUsage).
void ApplyJobOptions(const RenderOptions& options, RenderJob& job);

/// The number.  Throws ToolError(kUsage) when it is not one of least..most.
int CheckedWithin(int number, int least, int most);

}  // namespace cli
