#include "cli/run/open_sink.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "cli/file/extension.h"
#include "cli/file/pending_file.h"
#include "cli/picture/losses.h"
#include "cli/picture/still_sink.h"
#include "cli/picture/writer.h"
#include "cli/report/error.h"
#include "cli/video/format.h"
#include "cli/video/sink.h"

namespace cli {
namespace {

std::optional<CarriedFile> CarriedOf(const RenderPlan& plan) {
  const std::vector<std::int32_t>& frames = plan.job.frames;
  if (plan.video == nullptr || frames.empty()) {
    return {};
  }
  const std::int64_t span = std::int64_t{frames.back()} - frames.front() + 1;
  return CarriedFile{.range = plan.video->Range(frames.front(), frames.back()),
                     .hasGaps = span != static_cast<std::int64_t>(frames.size())};
}

int BitsOf(const RenderPlan& plan) {
  return plan.video != nullptr ? plan.video->Bits() : plan.traits.extras ? plan.traits.extras->bits : 0;
}

// Made smaller, lines of both fields are mixed.
FieldOrder FieldsOf(const Scene& scene, const RenderPlan& plan) {
  return plan.video != nullptr && scene.proxy == 1 ? plan.video->Fields() : FieldOrder::kProgressive;
}

std::optional<FileRange> SoundOf(const RenderPlan& plan) {
  const std::vector<std::int32_t>& frames = plan.job.frames;
  return plan.video != nullptr && !frames.empty() ? plan.video->Sound(frames.front(), frames.back())
                                                  : std::nullopt;
}

// One frame of an input that has any number of them, and none was asked for.
bool IsLoneStill(const RenderPlan& plan) {
  return plan.takesAll && plan.job.frames.size() == 1 && !plan.traits.lastFrame;
}

// What only some files take; what they take of it, their encoders say.
void CheckEncoding(const Scene& scene) {
  const EncodingSettings& encoding = scene.encoding;
  const std::string extension = LowerExtension(scene.output);
  const bool isVideo = VideoFormatOf(scene.output).has_value();
  if (encoding.isHalf && extension != ".exr") {
    Refuse(ExitCode::kUsage, "depth half is for EXR, not for '{}'; write .exr, or choose depth 16 or float",
           scene.output);
  }
  if (!encoding.codec.empty() && !isVideo) {
    Refuse(ExitCode::kUsage, "codec '{}' is for videos, not for '{}'; write .mp4, .mov or .mkv",
           encoding.codec, scene.output);
  }
  if (encoding.sound != SoundWish::kAuto && !isVideo) {
    Refuse(ExitCode::kUsage, "sound '{}' is for videos, not for '{}'; write .mp4, .mov or .mkv",
           FormatSound(encoding.sound), scene.output);
  }
}

}  // namespace

OpenedSink OpenSink(const Scene& scene, const RenderPlan& plan, const InputFiles& inputs) {
  if (scene.output.empty()) {
    Refuse(ExitCode::kUsage, "no output: name one with -o, such as -o snow.png or -o snow.mp4");
  }
  CheckEncoding(scene);
  if (VideoFormatOf(scene.output)) {
    CheckWritable(scene.output);
    inputs.CheckKept(scene.output);
    if (!scene.encoding.compression.empty()) {
      Refuse(ExitCode::kUsage, "compression '{}' is for pictures; a video has its own",
             scene.encoding.compression);
    }
    // The video's frames follow each other whatever their numbers, so its sound is that of the frames from
    // the first to the last when none is left out between.
    const std::optional<CarriedFile> carried = CarriedOf(plan);
    const std::optional<FileRange> sound = SoundOf(plan);
    const bool losesSound = carried && carried->hasGaps && sound;
    const VideoTraits traits = {.width = plan.traits.width,
                                .height = plan.traits.height,
                                .depth = plan.traits.depth,
                                .hasAlpha = plan.traits.hasAlpha || plan.addsAlpha,
                                .pixelAspect = scene.pixelAspect.value_or(plan.traits.pixelAspect),
                                .rate = plan.rate,
                                .tags = plan.video != nullptr ? plan.video->Tags() : ColorTags{},
                                .sound = losesSound ? std::nullopt : sound,
                                .carried = carried,
                                .encoding = scene.encoding,
                                .sourceBits = BitsOf(plan),
                                .fields = FieldsOf(scene, plan),
                                .levels = plan.video != nullptr ? plan.video->Levels() : LightLevels{}};
    auto video = std::make_unique<VideoSink>(scene.output, traits);
    std::vector<std::string> notes = video->Notes();
    if (losesSound && scene.encoding.sound != SoundWish::kNone) {
      notes.emplace_back("the sound is left out, since frames between are");
    }
    for (std::string& loss : LossesInVideo(plan.traits)) {
      notes.push_back(std::move(loss));
    }
    if (IsLoneStill(plan)) {
      notes.push_back(
          fmt::format("'{}' has a single frame; --frames 0-47 makes more of a picture", scene.output));
    }
    return {std::move(video), true, std::move(notes)};
  }
  const OutputName name(scene.output);
  const std::optional<FileFormat> format = PictureFormatOf(scene.output);
  if (!format) {
    Refuse(ExitCode::kUsage, "output '{}' must end in .png, .jpg, .tif, .exr, .mp4, .mov or .mkv",
           scene.output);
  }
  if (plan.job.frames.size() > 1 && !name.IsPattern()) {
    Refuse(ExitCode::kUsage, "{} frames need a place for their number in the output name; try -o '{}'",
           plan.job.frames.size(), name.SuggestedPattern().string());
  }
  if (!scene.encoding.compression.empty()) {
    CheckCompression(*format, scene.encoding.compression);
  }
  if (const auto quality = scene.encoding.quality) {
    CheckQuality(*format, *quality);
  }
  if (!plan.job.frames.empty()) {
    CheckWritable(name.ForFrame(plan.job.frames.front()));
  }
  for (const std::int32_t frame : plan.job.frames) {
    inputs.CheckKept(name.ForFrame(frame));
  }
  SourceTraits traits = plan.traits;
  traits.hasAlpha |= plan.addsAlpha;
  std::vector<std::string> notes = LossesOf(*format, traits);
  // Of several frames it is what was meant.
  const std::string file = std::filesystem::path(scene.output).filename().string();
  if (IsLoneStill(plan) && name.IsPattern() && std::ranges::count(file, '#') == 1) {
    notes.push_back(fmt::format("the # in '{}' stands for the frame's number; \\# is a # and no more", file));
  }
  return {std::make_unique<StillSink>(name, *format, scene.encoding), false, std::move(notes)};
}

}  // namespace cli
