#include "cli/command/scene_options.h"

#include <utility>

#include "cli/report/choice.h"
#include "cli/report/error.h"
#include "cli/scene/frame_range.h"
#include "cli/scene/frame_rate.h"
#include "cli/scene/reader.h"

namespace cli {
namespace {

void ApplyInput(const ShotOptions& options, Scene& scene) {
  if (!options.input.empty() && !options.blank.empty()) {
    Refuse(ExitCode::kUsage, "an input and --blank cannot be combined; give one of them");
  }
  if (!options.input.empty()) {
    scene.input = options.input;
    scene.blank.reset();
  } else if (!options.blank.empty()) {
    scene.blank = About("--blank", [&] { return ParseFrameSize(options.blank); });
    scene.input.clear();
  }
  if (!options.output.empty()) {
    scene.output = options.output;
  }
}

void ApplyTiming(const ShotOptions& options, Scene& scene) {
  if (!options.frames.empty()) {
    About("--frames", [&] { ParseFrames(options.frames); });
    scene.frames = options.frames;
  }
  if (!options.fps.empty()) {
    About("--fps", [&] { ParseFrameRate(options.fps); });
    scene.fps = options.fps;
  }
  if (options.shutterDegrees) {
    About("--shutter", [&] { CheckShutter(*options.shutterDegrees); });
    scene.shutterDegrees = *options.shutterDegrees;
  }
}

void ApplyPicture(const ShotOptions& options, Scene& scene) {
  if (!options.depth.empty()) {
    scene.depth = About("--depth", [&] { return ParseDepth(options.depth); });
  }
  if (!options.alpha.empty()) {
    scene.alpha = About("--alpha", [&] { return ParseAlphaForm(options.alpha); });
  }
  if (!options.compression.empty()) {
    scene.encoding.compression = options.compression;
  }
  if (options.proxy) {
    About("--proxy", [&] { CheckProxy(*options.proxy); });
    scene.proxy = *options.proxy;
  }
  if (options.pixelAspect) {
    About("--pixel-aspect", [&] { CheckPixelAspect(*options.pixelAspect); });
    scene.pixelAspect = options.pixelAspect;
  }
}

}  // namespace

Scene SceneOf(const ShotOptions& options, minihost::SharedParameterList list, const Presets& presets) {
  Scene scene(std::move(list));
  if (!options.preset.empty()) {
    ApplySceneFile(presets.Find(options.preset).file, scene);
  }
  if (!options.sceneFile.empty()) {
    ApplySceneFile(options.sceneFile, scene);
  }
  for (const ParameterChange& change : options.changes) {
    Apply(scene.parameters, change);
  }
  ApplyInput(options, scene);
  ApplyTiming(options, scene);
  ApplyPicture(options, scene);
  return scene;
}

int CheckedWithin(int number, int least, int most) {
  if (number < least || number > most) {
    Refuse(ExitCode::kUsage, "{} is not between {} and {}", number, least, most);
  }
  return number;
}

void ApplyJobOptions(const ShotOptions& options, RenderJob& job) {
  constexpr int kMaxJobs = 1024;
  constexpr Choices<MissingPolicy, 3> kPolicies = {
      {MissingPolicy::kError, "error"}, {MissingPolicy::kSkip, "skip"}, {MissingPolicy::kBlack, "black"}};
  // 0 stands for one job for each processor.
  job.jobs = About("--jobs", [&] { return CheckedWithin(options.jobs, 0, kMaxJobs); });
  if (!options.missing.empty()) {
    job.missing = About("--missing", [&] { return ParseChoice(kPolicies, options.missing); });
  }
}

}  // namespace cli
