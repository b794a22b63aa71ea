#include <fmt/format.h>

#include <chrono>
#include <string>
#include <utility>

#include "cli/command/commands.h"
#include "cli/command/outcome.h"
#include "cli/command/scene_options.h"
#include "cli/file/pending_file.h"
#include "cli/picture/contact_sheet.h"
#include "cli/picture/writer.h"
#include "cli/report/interrupt.h"
#include "cli/report/progress.h"
#include "cli/run/input_files.h"
#include "cli/run/plan.h"
#include "cli/scene/frame_range.h"

namespace cli {
namespace {

/// The sheet's own, from the command line: what a scene file says is for what is rendered of it.
EncodingSettings EncodingOf(const ShotOptions& options, FileFormat format) {
  EncodingSettings encoding;
  encoding.compression = options.compression;
  encoding.quality = options.quality;
  if (!encoding.compression.empty()) {
    CheckCompression(format, encoding.compression);
  }
  if (encoding.quality) {
    CheckQuality(format, *encoding.quality);
  }
  return encoding;
}

}  // namespace

ExitCode RenderSheet(const ShotOptions& options, int cells, std::shared_ptr<const minihost::Effect> effect,
                     Messages& messages) {
  const auto start = std::chrono::steady_clock::now();
  if (options.quiet) {
    messages.BeQuiet();
  }
  Scene scene = SceneOf(options, effect->SharedParameters(), Presets::OfTool(), FileOutput::kOfRenders);
  const ProgressStyle style = ProgressStyleOf(options);
  const auto count = static_cast<std::size_t>(
      About("--count", [&] { return CheckedWithin(cells, 1, static_cast<int>(ContactSheet::kMaxCells)); }));
  if (scene.output.empty()) {
    Refuse(ExitCode::kUsage, "no output: name one with -o, such as -o sheet.png");
  }
  const FileFormat format = FormatOf(scene.output);
  const EncodingSettings encoding = EncodingOf(options, format);
  CheckWritable(scene.output);
  if (options.noOverwrite) {
    CheckNothingIsThere(scene.output, "choose another name");
  }
  RenderPlan plan = MakePlan(scene, std::move(effect));
  InputFiles(scene, plan).CheckKept(scene.output);
  RenderJob& job = plan.job;
  job.frames = SpreadFrames(job.frames, count);
  ApplyJobOptions(options, job);

  ContactSheet sheet(job.frames, plan.traits);
  for (const std::string& note : plan.notes) {
    messages.Note(note);
  }
  RunSummary summary;
  RunEnd soFar{.left = job.frames.size()};
  messages.FramesSoFar(soFar);
  {
    const auto sayInterrupted = [&] { messages.Say("interrupted; there is no sheet"); };
    const GracefulEnd graceful([&] {
      sayInterrupted();
      messages.EndEarly(ExitCode::kInterrupted);
    });
    Progress progress(style, job.frames.size(), messages.Outlet());
    summary = RunPipeline(job, *plan.source, sheet,
                          {.interrupted = Interrupted, .report = [&](const FrameReport& report) {
                             CountFrame(report.outcome, start, soFar, messages);
                             progress.FrameDone(NewsOf(report, scene.output));
                           }});
    if (summary.interrupted) {
      sayInterrupted();
    }
  }
  SayFailures(messages, summary);
  if (!summary.interrupted) {
    const Picture& picture = sheet.Sheet();
    WriteWhole(scene.output, EncodePicture(picture.image, picture.traits, format, encoding));
    messages.Say(fmt::format("{} picture{} on '{}', {} x {}", summary.written,
                             summary.written == 1 ? "" : "s", scene.output, picture.image.Width(),
                             picture.image.Height()));
  }
  const ExitCode code = CodeAtEnd(messages, scene, plan, summary);
  RunEnd end = EndOf(code, summary);
  end.seconds = SecondsSince(start);
  messages.End(end);
  return code;
}

}  // namespace cli
