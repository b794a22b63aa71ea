#include "cli/command/outcome.h"

#include <fmt/format.h>

#include <system_error>
#include <utility>

#include "cli/report/choice.h"

namespace cli {

ProgressStyle ProgressStyleOf(const ShotOptions& options) {
  constexpr Choices<ProgressWish, 2> kWishes = {{ProgressWish::kText, "text"}, {ProgressWish::kJson, "json"}};
  ProgressWish wish = ProgressWish::kText;
  if (!options.progress.empty()) {
    wish = About("--progress", [&] { return ParseChoice(kWishes, options.progress); });
  }
  return StyleFor(options.quiet && wish == ProgressWish::kText ? ProgressWish::kNone : wish);
}

void CheckNothingIsThere(const std::filesystem::path& file, std::string_view remedy) {
  std::error_code error;
  if (std::filesystem::exists(std::filesystem::symlink_status(file, error))) {
    RefuseOutput(file, fmt::format("it is there already, and --no-overwrite keeps what is; {}", remedy));
  }
}

FrameNews NewsOf(const FrameReport& report, std::string path) {
  constexpr Choices<FrameOutcome, 3> kStatuses = {{FrameOutcome::kWritten, "written"},
                                                  {FrameOutcome::kSkipped, "missing"},
                                                  {FrameOutcome::kFailed, "failed"}};
  return {report.frame, NameOf(kStatuses, report.outcome), std::move(path), report.reason};
}

void SayFailures(Messages& messages, const RunSummary& summary) {
  if (messages.Form() == MessageForm::kText) {
    for (const FailedFrame& failed : summary.failed) {
      messages.Error(ExitCode::kFrameFailed, failed.message);
    }
  }
}

ExitCode CodeAtEnd(Messages& messages, const Scene& scene, const RenderPlan& plan,
                   const RunSummary& summary) {
  const ExitCode code = CodeOf(summary);
  const std::string damage = plan.source->Damage();
  if (!plan.takesAll || damage.empty() || code != ExitCode::kDone) {
    return code;
  }
  messages.Error(ExitCode::kInput, fmt::format("'{}' {}; what came is written", scene.input, damage));
  return ExitCode::kInput;
}

double SecondsSince(StartTime start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void CountFrame(FrameOutcome outcome, StartTime start, RunEnd& soFar, Messages& messages) {
  switch (outcome) {
    case FrameOutcome::kWritten:
      ++soFar.written;
      break;
    case FrameOutcome::kSkipped:
      ++soFar.missing;
      break;
    case FrameOutcome::kFailed:
      ++soFar.failed;
      break;
  }
  --soFar.left;
  soFar.seconds = SecondsSince(start);
  messages.FramesSoFar(soFar);
}

RunEnd EndOf(ExitCode code, const RunSummary& summary) {
  RunEnd end{.code = code};
  end.written = summary.written;
  end.missing = summary.skipped.size();
  end.failed = summary.failed.size();
  end.left = summary.Left();
  return end;
}

std::string CountFrames(std::size_t count) {
  return fmt::format("{} frame{}", count, count == 1 ? "" : "s");
}

}  // namespace cli
