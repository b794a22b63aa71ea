#include "cli/command/scene_options.h"

#include <fmt/format.h>

#include "cli/report/error.h"
#include "cli/scene/layers.h"
#include "cli/scene/presets.h"

namespace cli {
namespace {

// Runs `read` and puts the option's name before what it complains about.
template <class Read>
auto Option(const char* name, Read read) {
  try {
    return read();
  } catch (const ToolError& error) {
    Refuse(error.Code(), "{}: {}", name, error.what());
  }
}

void ApplyInput(const RenderOptions& options, Scene& scene) {
  if (!options.input.empty() && !options.blank.empty()) {
    Refuse(ExitCode::kUsage, "an input and --blank exclude each other; give one of them");
  }
  if (!options.input.empty()) {
    scene.input = options.input;
    scene.blank.reset();
  } else if (!options.blank.empty()) {
    scene.blank = Option("--blank", [&] { return ParseFrameSize(options.blank); });
    scene.input.clear();
  }
  if (!options.output.empty()) {
    scene.output = options.output;
  }
}

void ApplyTiming(const RenderOptions& options, Scene& scene) {
  if (!options.frames.empty()) {
    scene.frames = options.frames;
  }
  if (!options.fps.empty()) {
    scene.fps = options.fps;
  }
  if (options.shutterDegrees) {
    Option("--shutter", [&] { CheckShutter(*options.shutterDegrees); });
    scene.shutterDegrees = *options.shutterDegrees;
  }
}

void ApplyPicture(const RenderOptions& options, Scene& scene) {
  if (!options.depth.empty()) {
    scene.depth = Option("--depth", [&] { return ParseDepth(options.depth); });
  }
  if (!options.alpha.empty()) {
    scene.alpha = Option("--alpha", [&] { return ParseAlphaForm(options.alpha); });
  }
  if (!options.compression.empty()) {
    scene.compression = options.compression;
  }
  if (options.proxy) {
    Option("--proxy", [&] { CheckProxy(*options.proxy); });
    scene.proxy = *options.proxy;
  }
  if (options.pixelAspect) {
    Option("--pixel-aspect", [&] { CheckPixelAspect(*options.pixelAspect); });
    scene.pixelAspect = options.pixelAspect;
  }
}

}  // namespace

Scene SceneOf(const RenderOptions& options, const minihost::Effect& effect) {
  Scene scene = MakeScene(effect.SharedParameters(), Presets::OfTool(),
                          {options.preset, options.sceneFile, options.changes});
  ApplyInput(options, scene);
  ApplyTiming(options, scene);
  ApplyPicture(options, scene);
  return scene;
}

}  // namespace cli
