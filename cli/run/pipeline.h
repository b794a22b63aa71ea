// Frames from a source through the effect into a sink, on many threads, in order.
//
// Reading runs in order on one thread at a time, rendering and encoding on as many as there are jobs, writing
// in order again.  Every frame is a matter of its number, the parameters and its picture alone, so the sink
// gets the same bytes in the same order at any number of jobs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cli/frames/sink.h"
#include "cli/frames/source.h"
#include "cli/report/error.h"
#include "minihost/effect.h"
#include "minihost/frame.h"
#include "minihost/parameter/set.h"

namespace cli {

/// What becomes of a frame that the source does not have.
enum class MissingPolicy {
  kError,  // the frame fails
  kSkip,   // the output does not have it either
  kBlack,  // black stands in: transparent where the source has alpha, else opaque
};

/// What becomes of the others when a frame fails: its picture is missing or unreadable, or the effect fails.
/// Output that cannot be written ends the run in any case.
enum class OnFailure { kStop, kKeepGoing };

/// Whether the output has an alpha channel that the source lacks.
enum class AddedAlpha { kNone, kFromEffect };

struct RenderJob {
  std::shared_ptr<const minihost::Effect> effect;
  minihost::ParameterSet parameters;
  minihost::FrameTiming timing{};  // localTimeStep is timeStep: a frame of the output is one of the layer
  PF_RationalScale downsampleX{1, 1};
  PF_RationalScale downsampleY{1, 1};
  PF_RationalScale pixelAspect{1, 1};
  std::vector<std::int32_t>
      frames{};  // in the order in which they are written; times timeStep within 32 bits
  int jobs = 0;  // frames at the same time; 0: one for each processor
  MissingPolicy missing = MissingPolicy::kError;
  OnFailure onFailure = OnFailure::kStop;
  AddedAlpha addedAlpha = AddedAlpha::kNone;
};

enum class FrameOutcome { kWritten, kSkipped, kFailed };

struct FrameReport {
  std::int32_t frame;
  FrameOutcome outcome;
  std::string reason{};  // empty when it is written
};

/// The pipeline's way to the rest of the program; each may be empty.
struct RunHooks {
  /// Whether to end early.  Asked often, on any thread, on many at once.
  std::function<bool()> interrupted{};

  /// Called after each frame, in their order, one at a time, on any thread; a frame that is reported as
  /// written has come back from FrameSink::Write, and one that ends the run is reported as failed too.  What
  /// it throws ends the run like a failed write.
  std::function<void(const FrameReport& report)> report{};
};

struct FailedFrame {
  std::int32_t frame;
  std::string message;
};

struct RunSummary {
  std::size_t total = 0;
  std::size_t written = 0;
  std::vector<std::int32_t> skipped;
  std::vector<FailedFrame> failed;
  bool interrupted = false;  // before all was done

  std::size_t Left() const { return total - written - skipped.size() - failed.size(); }
};

/// kInterrupted, kFrameFailed when frames failed, or kDone.
ExitCode CodeOf(const RunSummary& summary);

/// Renders all frames and finishes the sink, unless there was nothing to write.
///
/// The first failure in the order of the frames ends the run, unless job.onFailure says to go on: the frames
/// before it are written, those after it are not, and the exception is thrown on as it was (ToolError with
/// kInput, kFrameFailed or kOutput, mostly).  The sink is then not finished.
///
/// On an interrupt frames under way end as soon as the effect can, the frames that are complete are written,
/// the sink is not finished, and the summary says so.
///
/// Throws std::invalid_argument when timing.localTimeStep differs from timeStep.
RunSummary RunPipeline(const RenderJob& job, FrameSource& source, FrameSink& sink,
                       const RunHooks& hooks = {});

/// How many pictures' worth of work may be under way: jobs + 2, so that every job is busy while one frame is
/// read and one is written, or as many as keep below kPipelineMemory, counting for each frame its input, its
/// output and its encoded form at the size of a picture; at least one.
std::size_t FramesUnderWay(int jobs, const SourceTraits& traits);

inline constexpr std::size_t kPipelineMemory = std::size_t{4} << 30;  // bytes

}  // namespace cli
