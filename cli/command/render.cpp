#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/command/commands.h"
#include "cli/command/outcome.h"
#include "cli/command/scene_options.h"
#include "cli/file/pending_file.h"
#include "cli/report/interrupt.h"
#include "cli/report/messages.h"
#include "cli/report/progress.h"
#include "cli/run/open_sink.h"
#include "cli/run/plan.h"
#include "cli/run/resumption.h"
#include "cli/scene/frame_range.h"
#include "cli/scene/parameter_assignment.h"
#include "cli/scene/parameter_names.h"
#include "cli/scene/writer.h"

namespace cli {
namespace {

// A list of what is done, for outputs of one file a frame.
std::optional<Resumption> ResumptionOf(const ShotOptions& options, const Scene& scene,
                                       const std::string& inputStamp, const RenderPlan& plan,
                                       const OpenedSink& sink) {
  if (!sink.isVideo && OutputName(scene.output).IsPattern()) {
    return std::optional<Resumption>(std::in_place, scene, inputStamp, *plan.source, plan.job.frames);
  }
  if (!options.resume) {
    return {};
  }
  if (sink.isVideo) {
    Refuse(ExitCode::kUsage,
           "--resume: a video is one file and cannot be resumed; render to numbered pictures, such as -o "
           "snow.####.png");
  }
  Refuse(ExitCode::kUsage,
         "--resume: '{}' is a single picture, with nothing to go on from; leave --resume out, or render to "
         "numbered pictures, such as -o '{}'",
         scene.output, OutputName(scene.output).SuggestedPattern().string());
}

void SaveScene(const std::filesystem::path& file, const Scene& scene, const InputFiles& inputs) {
  inputs.CheckKept(file);
  const std::string text = WriteScene(scene);
  WriteWhole(file, std::vector<std::uint8_t>(text.begin(), text.end()));
}

bool IsSet(const Scene& scene, const char* name, double value) {
  const int index = ParameterNames(scene.parameters.List()).Find(name).index;
  const auto& keys = scene.parameters.TrackOf(index).Keys();
  return std::ranges::any_of(keys,
                             [&](const minihost::Key& key) { return std::get<double>(key.value) == value; });
}

bool IsLightenedSnowAlone(const Scene& scene) {
  constexpr double kOff = 0;
  constexpr double kLighten = 2;
  return IsSet(scene, kCompositeWithOriginal, kOff) && IsSet(scene, kTransferMode, kLighten);
}

void SayNotes(Messages& messages, const Scene& scene, const RenderPlan& plan, const OpenedSink& sink) {
  for (const std::string& note : plan.notes) {
    messages.Note(note);
  }
  if (IsLightenedSnowAlone(scene)) {
    messages.Note(
        "snow drawn in Lighten cannot be laid over the plate later: it depends on what is under it; for a "
        "layer that can, add --set transfer-mode=composite, in 16 bits or float");
  }
  for (const std::string& note : sink.notes) {
    messages.Note(note);
  }
}

/// Whether the sequence holds frames of another scene beside the run's, which is said.
bool SayIfMixed(Messages& messages, const Scene& scene, std::optional<Resumption>& resumption) {
  const auto frame = resumption ? resumption->OfAnotherBeside() : std::nullopt;
  if (frame) {
    messages.Note(fmt::format("'{}' holds frames of another scene or input beside these, such as frame {}",
                              scene.output, *frame));
  }
  return frame.has_value();
}

// Takes away what an earlier run of the same output left behind when it was killed.
void TidyUp(const std::filesystem::path& output) {
  const OutputName name(output);
  RemoveAbandoned(output.parent_path(), [&](std::string_view file) { return name.Makes(file); });
}

std::string SizeText(const SourceTraits& traits) {
  return fmt::format("{} x {}, {}", traits.width, traits.height, NameOfDepth(traits.depth));
}

void PrintPlan(const Scene& scene, const RenderPlan& plan, bool isVideo) {
  PrintToStdout(fmt::format("{}\n# {} from {} to {}, {}, {}\n", WriteScene(scene),
                            CountFrames(plan.job.frames.size()), scene.blank ? "blank frames" : scene.input,
                            scene.output, SizeText(plan.traits), isVideo ? "one video" : "one file a frame"));
}

void SaySummary(Messages& messages, const Scene& scene, const RenderPlan& plan, const RunSummary& summary,
                std::size_t alreadyDone, double seconds) {
  SayFailures(messages, summary);
  std::string line =
      fmt::format("{}, {}, {:.2f} s, {:.1f} frames/s", CountFrames(summary.written), SizeText(plan.traits),
                  seconds, static_cast<double>(summary.written) / seconds);
  if (plan.traits.hasAlpha && plan.video != nullptr) {
    line += fmt::format(", {} alpha", FormatAlphaForm(scene.alpha));
  }
  if (alreadyDone > 0) {
    line += fmt::format(", {} done before", alreadyDone);
  }
  if (!summary.skipped.empty()) {
    line += fmt::format(", {} skipped", summary.skipped.size());
  }
  if (!summary.failed.empty()) {
    line += fmt::format(", {} failed", summary.failed.size());
  }
  messages.Say(line);
}

void SayHowToGoOn(Messages& messages, std::size_t left, bool canResume) {
  messages.Say(fmt::format("interrupted with {} left; {}", CountFrames(left),
                           canResume ? "the same command with --resume goes on from here"
                                     : "nothing was kept, since the output is one file"));
}

}  // namespace

ExitCode RenderShot(const ShotOptions& options, std::shared_ptr<const minihost::Effect> effect,
                    Messages& messages) {
  const auto start = std::chrono::steady_clock::now();
  if (options.quiet) {
    messages.BeQuiet();
  }
  Scene scene = SceneOf(options, effect->SharedParameters(), Presets::OfTool());
  const ProgressStyle style = ProgressStyleOf(options);
  const std::string inputStamp = FileStamp(scene.input);
  RenderPlan plan = MakePlan(scene, std::move(effect));
  RenderJob& job = plan.job;
  ApplyJobOptions(options, job);
  if (!options.part.empty()) {
    job.frames = TakePart(job.frames, About("--part", [&] { return ParsePart(options.part); }));
  }

  const InputFiles inputs(scene, plan);
  const OpenedSink sink = OpenSink(scene, plan, inputs);
  std::optional<Resumption> resumption = ResumptionOf(options, scene, inputStamp, plan, sink);
  if (!options.saveScene.empty()) {
    SaveScene(options.saveScene, scene, inputs);
  }
  SayNotes(messages, scene, plan, sink);
  if (options.dryRun) {
    PrintPlan(scene, plan, sink.isVideo);
    return ExitCode::kDone;
  }
  TidyUp(scene.output);
  const OutputName name(scene.output);
  const auto pathOf = [&](std::int32_t frame) { return name.ForFrame(frame).string(); };
  const std::vector<std::int32_t> done =
      options.resume ? resumption->TakeOut(job.frames) : std::vector<std::int32_t>();
  if (options.noOverwrite) {
    for (const std::int32_t frame : job.frames) {
      CheckNothingIsThere(name.ForFrame(frame),
                          resumption ? "choose another name, or --resume for the frames that are missing"
                                     : "choose another name");
    }
  }
  if (const std::size_t others = resumption ? resumption->OfAnotherScene(job.frames) : 0; others > 0) {
    messages.Note(
        fmt::format("{} of '{}' {} of another scene or input and will be replaced; to keep them, write to "
                    "another folder or name, or add --no-overwrite",
                    CountFrames(others), scene.output, others == 1 ? "is" : "are"));
  }
  const bool isMixed = SayIfMixed(messages, scene, resumption);
  for (const std::int32_t frame : done) {
    messages.FrameDoneBefore(frame, pathOf(frame));
  }

  RunSummary summary;
  std::atomic<std::size_t> left = job.frames.size();
  RunEnd soFar{.skipped = done.size(), .left = left};
  messages.FramesSoFar(soFar);
  {
    const GracefulEnd graceful([&] {
      SayHowToGoOn(messages, left, resumption.has_value());
      messages.EndEarly(ExitCode::kInterrupted);
    });
    Progress progress(style, job.frames.size(), messages.Outlet());
    summary = RunPipeline(job, *plan.source, *sink.frames,
                          {.interrupted = Interrupted, .report = [&](const FrameReport& report) {
                             if (resumption && report.outcome == FrameOutcome::kWritten) {
                               resumption->Note(report.frame);
                             }
                             CountFrame(report.outcome, start, soFar, messages);
                             left = soFar.left;
                             progress.FrameDone(NewsOf(report, pathOf(report.frame)));
                           }});
  }
  const double seconds = SecondsSince(start);
  if (!isMixed) {
    SayIfMixed(messages, scene, resumption);  // another machine may have begun meanwhile
  }
  SaySummary(messages, scene, plan, summary, done.size(), seconds);
  if (sink.isVideo && summary.written == 0 && !summary.interrupted) {
    Refuse(ExitCode::kFrameFailed, "there was no frame to write, so '{}' was not made", scene.output);
  }
  if (summary.interrupted) {
    SayHowToGoOn(messages, summary.Left(), resumption.has_value());
  }
  const ExitCode code = CodeAtEnd(messages, scene, plan, summary);
  RunEnd end = EndOf(code, summary);
  end.skipped = done.size();
  end.seconds = seconds;
  messages.End(end);
  return code;
}

}  // namespace cli
