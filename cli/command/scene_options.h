// The scene that a command line asks for.
#pragma once

#include "cli/command/options.h"
#include "cli/run/pipeline.h"
#include "cli/scene/presets.h"
#include "cli/scene/scene.h"

namespace cli {

/// What the output that a scene file names is taken for.
enum class FileOutput {
  kIsTaken,    // the one of this run
  kOfRenders,  // the place of rendered frames, which a sheet must not lie over
};

/// The effect's defaults with the layers of the command line on them: --preset, --scene, the changes of
/// parameters in the order in which they were written, and the other options.  What a later layer says of a
/// parameter replaces all that earlier ones said of it, keys too.  Throws ToolError.
Scene SceneOf(const ShotOptions& options, minihost::SharedParameterList list, const Presets& presets,
              FileOutput fileOutput = FileOutput::kIsTaken);

/// How the frames are done: --jobs, --missing and --keep-going.  Throws ToolError(kUsage).
void ApplyJobOptions(const ShotOptions& options, RenderJob& job);

/// The number.  Throws ToolError(kUsage) when it is not one of least..most.
int CheckedWithin(int number, int least, int most);

}  // namespace cli
