#include "cli/command/scene_options.h"

#include <string>
#include <utility>
#include <vector>

#include "cli/report/choice.h"
#include "cli/report/error.h"
#include "cli/scene/frame_range.h"
#include "cli/scene/frame_rate.h"
#include "cli/scene/reader.h"

namespace cli {
namespace {

// The output may stand last without an option, as it does for other tools.
ShotOptions WithFilesInPlace(ShotOptions options) {
  std::vector<std::string> files(options.files.begin(), options.files.end());
  std::erase(files, "");
  if (options.input.empty() && !files.empty() && (options.blank.empty() || !options.output.empty())) {
    options.input = files.front();
    files.erase(files.begin());
  }
  if (options.output.empty() && !files.empty()) {
    options.output = files.front();
    files.erase(files.begin());
  }
  if (!files.empty()) {
    Refuse(ExitCode::kUsage,
           "'{}' is one file too many beside the input and the output '{}'; leave one of them", files.front(),
           options.output);
  }
  return options;
}

void ApplyInput(const ShotOptions& given, Scene& scene) {
  const ShotOptions options = WithFilesInPlace(given);
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
    scene.SetDepth(About("--depth", [&] { return ParseDepth(options.depth); }));
  }
  if (!options.alpha.empty()) {
    scene.alpha = About("--alpha", [&] { return ParseAlphaForm(options.alpha); });
  }
  if (!options.compression.empty()) {
    scene.encoding.compression = options.compression;
  }
  if (!options.codec.empty()) {
    scene.encoding.codec = options.codec;
  }
  if (options.quality) {
    scene.encoding.quality = options.quality;
  }
  if (!options.sound.empty()) {
    scene.encoding.sound = About("--sound", [&] { return ParseSound(options.sound); });
  }
  scene.retime = scene.retime || options.retime;
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

Scene SceneOf(const ShotOptions& options, minihost::SharedParameterList list, const Presets& presets,
              FileOutput fileOutput) {
  Scene scene(std::move(list));
  if (!options.preset.empty()) {
    // Of a whole scene its look alone.
    Scene look = scene;
    ApplySceneFile(presets.FileOf(options.preset), look);
    scene.parameters = look.parameters;
  }
  if (!options.sceneFile.empty()) {
    ApplySceneFile(options.sceneFile, scene);
  }
  if (fileOutput == FileOutput::kOfRenders) {
    scene.output.clear();
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
  job.onFailure = options.keepGoing ? OnFailure::kKeepGoing : OnFailure::kStop;
  if (!options.missing.empty()) {
    job.missing = About("--missing", [&] { return ParseChoice(kPolicies, options.missing); });
  }
}

}  // namespace cli
