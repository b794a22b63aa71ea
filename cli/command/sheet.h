// `vintrel sheet`: a few frames of a shot on one picture, so that one look shows the shot.
#pragma once

#include <memory>

#include "cli/command/render_options.h"
#include "cli/report/error.h"
#include "minihost/effect.h"

namespace cli {

/// Renders `count` frames, spread evenly over those that `options` asks for, onto one sheet with their
/// numbers, and writes it to `options.output`, a picture.  Throws ToolError.
ExitCode RunSheet(const RenderOptions& options, int count, std::shared_ptr<const minihost::Effect> effect);

}  // namespace cli
