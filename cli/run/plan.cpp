#include "cli/run/plan.h"

#include <fmt/format.h>

#include <utility>

#include "cli/report/error.h"
#include "cli/scene/frame_range.h"
#include "cli/scene/frame_rate.h"
#include "cli/scene/frame_terms.h"
#include "cli/scene/parameter_assignment.h"
#include "cli/scene/parameter_names.h"

namespace cli {
namespace {

bool IsOff(const minihost::ParameterSet& parameters, const char* name) {
  const int index = ParameterNames(parameters.List()).Find(name).index;
  return std::get<double>(parameters.At(index, 0)) == 0;
}

std::optional<FrameRate> RetimedOf(const Scene& scene) {
  if (!scene.retime) {
    return {};
  }
  if (scene.fps.empty()) {
    Refuse(ExitCode::kUsage, "retime needs a frame rate; add one, such as --fps 25");
  }
  return ParseFrameRate(scene.fps);
}

void OpenInput(const Scene& scene, RenderPlan& plan) {
  if (scene.blank) {
    const minihost::Depth depth = scene.depth.value_or(minihost::Depth::kBits8);
    plan.source = std::make_unique<BlankSource>(*scene.blank, depth);
  } else if (!scene.input.empty()) {
    OpenedSource opened = OpenSource(scene.input, InputSettingsOf(scene));
    if (scene.retime && opened.video == nullptr) {
      Refuse(ExitCode::kUsage, "retime is for videos, and '{}' is none; leave it out", scene.input);
    }
    plan.source = std::move(opened.frames);
    plan.video = opened.video;
    plan.notes = std::move(opened.notes);
  } else {
    Refuse(ExitCode::kUsage, "no input: name a picture, a sequence or a video, or give --blank WIDTHxHEIGHT");
  }
  if (scene.proxy > 1) {
    plan.source = std::make_unique<ProxySource>(std::move(plan.source), scene.proxy);
  }
  plan.traits = plan.source->Traits();
}

FrameRate RateOf(const Scene& scene, const SourceTraits& traits) {
  if (!scene.fps.empty()) {
    return ParseFrameRate(scene.fps);
  }
  return traits.rate.value_or(FrameRate{});
}

std::string FramesOf(const Scene& scene, const SourceTraits& traits) {
  if (!scene.frames.empty()) {
    return scene.frames;
  }
  if (traits.firstFrame && traits.lastFrame) {
    return fmt::format("{}-{}", *traits.firstFrame, *traits.lastFrame);
  }
  return "0";
}

}  // namespace

RenderPlan MakePlan(Scene& scene, std::shared_ptr<const minihost::Effect> effect) {
  RenderPlan plan{
      .source = nullptr,
      .traits = {},
      .rate = {},
      .job = {.effect = std::move(effect), .parameters = scene.parameters, .timing = {}, .frames = {}},
      .notes = {}};
  OpenInput(scene, plan);
  plan.rate = RateOf(scene, plan.traits);
  const bool isRateAsked = !scene.fps.empty();
  scene.fps = fmt::format("{}/{}", plan.rate.timeScale, plan.rate.timeStep);
  plan.takesAll = scene.frames.empty();
  scene.frames = FramesOf(scene, plan.traits);
  plan.addsAlpha = IsOff(scene.parameters, kCompositeWithOriginal);

  RenderJob& job = plan.job;
  job.frames = ParseFrames(scene.frames);
  // Retimed it lasts as long as it did.
  if (isRateAsked && !scene.retime && plan.video != nullptr && plan.video->HasVaryingRate()) {
    const double rate = static_cast<double>(plan.rate.timeScale) / plan.rate.timeStep;
    plan.notes.push_back(fmt::format("at {:.5g} frames a second the result lasts {:.2f} s", rate,
                                     static_cast<double>(job.frames.size()) / rate));
  }
  for (const std::int32_t frame : job.frames) {
    CheckCountable(frame, plan.rate);
  }
  job.timing = TimingOf(plan.rate, scene.shutterDegrees);
  job.downsampleX = job.downsampleY = {1, static_cast<std::uint32_t>(scene.proxy)};
  job.pixelAspect = PixelAspectOf(scene.pixelAspect.value_or(plan.traits.pixelAspect));
  job.addedAlpha = plan.addsAlpha ? AddedAlpha::kFromEffect : AddedAlpha::kNone;
  return plan;
}

InputSettings InputSettingsOf(const Scene& scene) {
  return {.depth = scene.depth, .videoAlpha = scene.alpha, .retimed = RetimedOf(scene)};
}

std::string NameOfDepth(minihost::Depth depth) {
  return depth == minihost::Depth::kBits8    ? "8 bits"
         : depth == minihost::Depth::kBits16 ? "16 bits"
                                             : "float";
}

}  // namespace cli
