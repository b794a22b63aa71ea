// Where the frames of a render go: numbered pictures, one picture, or a video.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cli/file/output_name.h"
#include "cli/frames/sink.h"
#include "cli/run/input_files.h"
#include "cli/run/plan.h"
#include "cli/scene/scene.h"

namespace cli {

struct OpenedSink {
  std::unique_ptr<FrameSink> frames;
  bool isVideo = false;
  std::vector<std::string> notes{};  // for the user
};

/// Decides by the extension of the scene's output.  Nothing exists under its final name yet.  Throws
/// ToolError(kUsage) for an unknown extension, a compression that the format does not take, several frames in
/// one picture, and an output that is the input; ToolError(kOutput) for a place that cannot be written.
OpenedSink OpenSink(const Scene& scene, const RenderPlan& plan, const InputFiles& inputs);

}  // namespace cli
