#include <fmt/format.h>

#include <utility>

#include "cli/command/commands.h"
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

ExitCode RenderSheet(const ShotOptions& options, int cells, std::shared_ptr<const minihost::Effect> effect,
                     Messages& messages) {
  if (options.quiet) {
    messages.BeQuiet();
  }
  Scene scene = SceneOf(options, effect->SharedParameters(), Presets::OfTool());
  const auto count = static_cast<std::size_t>(
      About("--count", [&] { return CheckedWithin(cells, 1, static_cast<int>(ContactSheet::kMaxCells)); }));
  if (scene.output.empty()) {
    Refuse(ExitCode::kUsage, "no output: name one with -o, such as -o sheet.png");
  }
  const FileFormat format = FormatOf(scene.output);
  if (!scene.encoding.compression.empty()) {
    CheckCompression(format, scene.encoding.compression);
  }
  CheckWritable(scene.output);
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
  {
    const char* const interrupted = "interrupted; there is no sheet";
    const GracefulEnd graceful([&] { messages.Say(interrupted); });
    Progress progress(StyleFor(options.quiet ? ProgressWish::kNone : ProgressWish::kText), job.frames.size(),
                      messages.Outlet());
    summary = RunPipeline(job, *plan.source, sheet,
                          {.interrupted = Interrupted, .report = [&](const FrameReport& report) {
                             progress.FrameDone({report.frame, "written"});
                           }});
  }
  if (summary.interrupted) {
    messages.Say("interrupted; there is no sheet");
  } else {
    const Picture& picture = sheet.Sheet();
    WriteWhole(scene.output, EncodePicture(picture.image, picture.traits, format, scene.encoding));
    messages.Say(fmt::format("{} picture{} on '{}', {} x {}", summary.written,
                             summary.written == 1 ? "" : "s", scene.output, picture.image.Width(),
                             picture.image.Height()));
  }
  return CodeOf(summary);
}

}  // namespace cli
