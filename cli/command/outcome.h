// What the commands that render say of their frames, and the code that they end with.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>

#include "cli/command/options.h"
#include "cli/report/messages.h"
#include "cli/report/progress.h"
#include "cli/run/pipeline.h"
#include "cli/run/plan.h"
#include "cli/scene/scene.h"

namespace cli {

/// --progress and --quiet.  Throws ToolError(kUsage).
ProgressStyle ProgressStyleOf(const ShotOptions& options);

/// --no-overwrite: throws ToolError(kOutput) when there is such a file, saying what to do.
void CheckNothingIsThere(const std::filesystem::path& file, std::string_view remedy);

/// `path` is that of the file that holds the frame, or would.
FrameNews NewsOf(const FrameReport& report, std::string path);

/// Why frames failed, for people: programs have heard it with each frame.
void SayFailures(Messages& messages, const RunSummary& summary);

/// The code that a finished run ends with.  An input of which every frame was asked for, and that breaks off,
/// is an error, and said.
ExitCode CodeAtEnd(Messages& messages, const Scene& scene, const RenderPlan& plan, const RunSummary& summary);

/// When the command began.
using StartTime = std::chrono::steady_clock::time_point;

double SecondsSince(StartTime start);

/// One frame more, which the messages are to know of should the run end before it is over.
void CountFrame(FrameOutcome outcome, StartTime start, RunEnd& soFar, Messages& messages);

/// The run for programs, but for frames that were done before it and its time.
RunEnd EndOf(ExitCode code, const RunSummary& summary);

/// "1 frame", "12 frames".
std::string CountFrames(std::size_t count);

}  // namespace cli
