// A scene, opened: what it reads from, and everything that the pipeline needs to know.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cli/frames/source.h"
#include "cli/run/open_source.h"
#include "cli/run/pipeline.h"
#include "cli/scene/scene.h"
#include "cli/video/source.h"

namespace cli {

struct RenderPlan {
  std::unique_ptr<FrameSource> source;
  const VideoSource* video = nullptr;  // the source, or what lies under it, when it is a video
  SourceTraits traits;                 // of the source as it is rendered
  FrameRate rate;
  bool takesAll = false;           // every frame that the input has, none named
  bool addsAlpha = false;          // the output has alpha that the input lacks: snow alone
  RenderJob job;                   // frames, timing and scale; the caller sets jobs and policies
  std::vector<std::string> notes;  // for the user
};

/// Opens the scene's input and works out its frames: those of the scene, or all that the input has, or frame
/// 0. `scene.frames` and `scene.fps` then hold what was worked out.  Throws ToolError.
RenderPlan MakePlan(Scene& scene, std::shared_ptr<const minihost::Effect> effect);

/// How the scene's input is to be read.  Throws ToolError(kUsage) when it is to be retimed to no rate.
InputSettings InputSettingsOf(const Scene& scene);

/// "8 bits", "16 bits" or "float".
std::string NameOfDepth(minihost::Depth depth);

}  // namespace cli
