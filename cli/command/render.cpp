#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/command/commands.h"
#include "cli/command/scene_options.h"
#include "cli/file/pending_file.h"
#include "cli/report/choice.h"
#include "cli/report/interrupt.h"
#include "cli/report/progress.h"
#include "cli/run/open_sink.h"
#include "cli/run/plan.h"
#include "cli/run/resumption.h"
#include "cli/scene/frame_range.h"
#include "cli/scene/writer.h"

namespace cli {
namespace {

void Say(const ShotOptions& options, const std::string& line) {
  if (!options.quiet) {
    fmt::print(stderr, "{}\n", line);
  }
}

ProgressStyle StyleOf(const ShotOptions& options) {
  constexpr Choices<ProgressWish, 2> kWishes = {{ProgressWish::kText, "text"}, {ProgressWish::kJson, "json"}};
  ProgressWish wish = ProgressWish::kText;
  if (!options.progress.empty()) {
    wish = About("--progress", [&] { return ParseChoice(kWishes, options.progress); });
  }
  return StyleFor(options.quiet && wish == ProgressWish::kText ? ProgressWish::kNone : wish);
}

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
  Refuse(ExitCode::kUsage,
         "--resume: a video or a single picture cannot be resumed; render to numbered pictures, such as -o "
         "snow.####.png");
}

void SaveScene(const std::filesystem::path& file, const Scene& scene, const InputFiles& inputs) {
  inputs.CheckKept(file);
  const std::string text = WriteScene(scene);
  WriteWhole(file, std::vector<std::uint8_t>(text.begin(), text.end()));
}

// Takes away what an earlier run of the same output left behind when it was killed.
void TidyUp(const std::filesystem::path& output) {
  const OutputName name(output);
  RemoveAbandoned(output.parent_path(), [&](std::string_view file) { return name.Makes(file); });
}

std::string SizeText(const SourceTraits& traits) {
  return fmt::format("{} x {}, {}", traits.width, traits.height, NameOfDepth(traits.depth));
}

std::string Frames(std::size_t count) {
  return fmt::format("{} frame{}", count, count == 1 ? "" : "s");
}

void PrintPlan(const Scene& scene, const RenderPlan& plan, bool isVideo) {
  fmt::print("{}\n", WriteScene(scene));
  fmt::print("# {} from {} to {}, {}, {}\n", Frames(plan.job.frames.size()),
             scene.blank ? "blank frames" : scene.input, scene.output, SizeText(plan.traits),
             isVideo ? "one video" : "one file a frame");
}

void PrintSummary(const ShotOptions& options, const Scene& scene, const RenderPlan& plan,
                  const RunSummary& summary, std::size_t alreadyDone, double seconds) {
  for (const FailedFrame& failed : summary.failed) {
    fmt::print(stderr, "vintrel: {}\n", failed.message);
  }
  std::string line =
      fmt::format("{}, {}, {:.2f} s, {:.1f} frames/s", Frames(summary.written), SizeText(plan.traits),
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
  Say(options, line);
}

void SayHowToGoOn(const ShotOptions& options, const RunSummary& summary, bool canResume) {
  const std::size_t left = summary.total - summary.written - summary.skipped.size() - summary.failed.size();
  Say(options, fmt::format("interrupted with {} left; {}", Frames(left),
                           canResume ? "the same command with --resume goes on from here"
                                     : "nothing was kept, since the output is one file"));
}

}  // namespace

ExitCode RenderShot(const ShotOptions& options, std::shared_ptr<const minihost::Effect> effect) {
  const auto start = std::chrono::steady_clock::now();
  Scene scene = SceneOf(options, effect->SharedParameters(), Presets::OfTool());
  const ProgressStyle style = StyleOf(options);
  const std::string inputStamp = FileStamp(scene.input);
  RenderPlan plan = MakePlan(scene, std::move(effect));
  RenderJob& job = plan.job;
  ApplyJobOptions(options, job);
  job.onFailure = options.keepGoing ? OnFailure::kKeepGoing : OnFailure::kStop;
  if (!options.part.empty()) {
    job.frames = TakePart(job.frames, About("--part", [&] { return ParsePart(options.part); }));
  }

  const InputFiles inputs(scene, plan);
  const OpenedSink sink = OpenSink(scene, plan, inputs);
  std::optional<Resumption> resumption = ResumptionOf(options, scene, inputStamp, plan, sink);
  if (!options.saveScene.empty()) {
    SaveScene(options.saveScene, scene, inputs);
  }
  if (options.dryRun) {
    PrintPlan(scene, plan, sink.isVideo);
    return ExitCode::kDone;
  }
  for (const std::string& note : plan.notes) {
    Say(options, fmt::format("note: {}", note));
  }
  for (const std::string& note : sink.notes) {
    Say(options, fmt::format("note: {}", note));
  }
  TidyUp(scene.output);
  const std::size_t alreadyDone = options.resume ? resumption->TakeOut(job.frames) : 0;

  const InterruptWatch watch;
  RunSummary summary;
  {
    Progress progress(style, job.frames.size(), StandardErrorOutlet());
    summary =
        RunPipeline(job, *plan.source, *sink.frames,
                    {.interrupted = Interrupted, .report = [&](std::int32_t frame, FrameOutcome outcome) {
                       if (resumption && outcome == FrameOutcome::kWritten) {
                         resumption->Note(frame);
                       }
                       progress.FrameDone(frame);
                     }});
  }
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
  PrintSummary(options, scene, plan, summary, alreadyDone, seconds.count());
  if (sink.isVideo && summary.written == 0 && !summary.interrupted) {
    Refuse(ExitCode::kFrameFailed, "there was no frame to write, so '{}' was not made", scene.output);
  }
  if (summary.interrupted) {
    SayHowToGoOn(options, summary, resumption.has_value());
  }
  const std::string damage = plan.source->Damage();
  if (plan.takesAll && !damage.empty() && CodeOf(summary) == ExitCode::kDone) {
    Refuse(ExitCode::kInput, "'{}' {}; what came is written", scene.input, damage);
  }
  return CodeOf(summary);
}

}  // namespace cli
