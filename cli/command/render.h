// `vintrel render`: snow on a picture, a sequence, a video or nothing.
#pragma once

#include <memory>

#include "cli/command/render_options.h"
#include "cli/report/error.h"
#include "minihost/effect.h"

namespace cli {

/// Runs the command line, with progress and a closing line on standard error.  Everything that can be checked
/// is, before the first frame; frames that are done stay when a later one fails.
///
/// Returns kDone, kFrameFailed or kInterrupted; throws ToolError for the rest.
ExitCode RunRender(const RenderOptions& options, std::shared_ptr<const minihost::Effect> effect);

}  // namespace cli
