#include "cli/run/pipeline.h"

#include <fmt/format.h>
#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/info.h>
#include <oneapi/tbb/parallel_pipeline.h>
#include <oneapi/tbb/task_arena.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "minihost/instance.h"
#include "minihost/picture/copy.h"

#if defined(__SANITIZE_THREAD__)
extern "C" void __tsan_acquire(void* address);
extern "C" void __tsan_release(void* address);
#endif

namespace cli {
namespace {

/// What the pipeline's library orders by means that a thread sanitizer, which sees none of its code, has to
/// be told: who begins after someone has ended at the same place sees all that the other did.
class Handover {
 public:
  explicit Handover([[maybe_unused]] void* place) : place_(place) {
#if defined(__SANITIZE_THREAD__)
    __tsan_acquire(place_);
#endif
  }
  ~Handover() {
#if defined(__SANITIZE_THREAD__)
    __tsan_release(place_);
#endif
  }
  Handover(const Handover&) = delete;
  Handover& operator=(const Handover&) = delete;

 private:
  [[maybe_unused]] void* place_;
};

using minihost::Image;
using minihost::Instance;

/// A frame between the stages, which hand it on whole.  No stage lets an exception out: it travels with its
/// frame, so that the frames before it still reach the sink.
struct Work {
  std::int32_t frame = 0;
  std::optional<Picture> input{};           // until it is rendered
  std::unique_ptr<EncodedFrame> encoded{};  // null: failed, skipped or given up
  std::exception_ptr failure{};
  bool skipped = false;
};

/// The effect's instances that the workers share: each is on loan to one frame at a time.
///
/// An instance continues the motion of the frame before at once, where others sum it up from frame 0.  That
/// costs some 30 ns for each frame before this one: nothing to speak of at frame 10000, but milliseconds at
/// 100000.  So the instance that rendered the frame before is lent when it is free, which it always is with
/// one worker.  Safe for many threads.
class InstancePool {
 public:
  InstancePool(std::shared_ptr<const minihost::Effect> effect, minihost::ParameterSet parameters)
      : effect_(std::move(effect)), parameters_(std::move(parameters)) {}

  /// A free instance, or a new one.  Whichever it is, the frame gets the same picture.
  Instance Take(std::int32_t frame) {
    const std::scoped_lock lock(mutex_);
    auto chosen = std::ranges::find(free_, std::int64_t{frame} - 1, &Resting::last);
    // The one that has rested longest is the least likely to be the next frame's.
    if (chosen == free_.end()) {
      chosen = std::ranges::min_element(free_, {}, &Resting::last);
    }
    if (chosen == free_.end()) {
      return Instance(effect_, parameters_);
    }
    Instance instance = std::move(chosen->instance);
    free_.erase(chosen);
    return instance;
  }

  /// After a frame that was rendered to its end.
  void GiveBack(Instance instance, std::int32_t frame) {
    const std::scoped_lock lock(mutex_);
    free_.push_back({std::move(instance), frame});
  }

 private:
  struct Resting {
    Instance instance;
    std::int64_t last;  // the frame that it rendered last
  };

  std::shared_ptr<const minihost::Effect> effect_;
  minihost::ParameterSet parameters_;
  std::mutex mutex_;
  std::vector<Resting> free_;
};

/// By name, since a thread sanitizer takes the library's putting the pointer in place for a race with this.
Work& FrameOf(const std::unique_ptr<Work>& token) {
  return *token;
}

class Pipeline {
 public:
  Pipeline(const RenderJob& job, FrameSource& source, FrameSink& sink, const RunHooks& hooks)
      : job_(job), source_(source), sink_(sink), hooks_(hooks), instances_(job.effect, job.parameters) {
    summary_.total = job.frames.size();
  }

  RunSummary Go() {
    namespace tbb = oneapi::tbb;
    CheckFrames();
    const int jobs = job_.jobs > 0 ? job_.jobs : tbb::info::default_concurrency();
    // The control allows for more threads than processors, the arena holds this run to its number.
    const tbb::global_control threads(tbb::global_control::max_allowed_parallelism,
                                      static_cast<std::size_t>(jobs));
    tbb::task_arena arena(jobs);
    using Token = std::unique_ptr<Work>;
    arena.execute([&] {
      tbb::parallel_pipeline(
          FramesUnderWay(jobs, source_.Traits()),
          tbb::make_filter<void, Token>(tbb::filter_mode::serial_in_order, [this](tbb::flow_control& flow) {
            const Handover stage(&source_);
            Token work = Read();
            if (!work) {
              flow.stop();
            }
            const Handover handed(work.get());
            return work;
          }) & tbb::make_filter<Token, Token>(tbb::filter_mode::parallel, [this](Token work) {
            Work& frame = FrameOf(work);
            const Handover handed(&frame);
            Process(frame);
            return work;
          }) & tbb::make_filter<Token, void>(tbb::filter_mode::serial_in_order, [this](const Token& work) {
            const Handover stage(&sink_);
            Work& frame = FrameOf(work);
            const Handover handed(&frame);
            Write(frame);
          }));
    });
    const Handover read(&source_), written(&sink_);
    if (failure_) {
      std::rethrow_exception(failure_);
    }
    summary_.interrupted = summary_.Left() > 0;
    if (!summary_.interrupted && summary_.written > 0) {
      sink_.Finish();
    }
    return std::move(summary_);
  }

 private:
  /// Whether nobody waits for frames any more.
  bool IsGivenUp() const { return ended_ || (hooks_.interrupted && hooks_.interrupted()); }

  /// Runs a stage's task; what it throws is kept with the frame.
  template <class Task>
  static void Attempt(Work& work, Task&& task) {
    try {
      task();
    } catch (...) {
      work.failure = std::current_exception();
    }
  }

  /// The message of a failure that the run survives; throws one on that it does not.
  std::string ForgivenMessage(const std::exception_ptr& failure) const {
    try {
      std::rethrow_exception(failure);
    } catch (const ToolError& error) {
      const bool ofOneFrame = error.Code() == ExitCode::kInput || error.Code() == ExitCode::kFrameFailed;
      if (job_.onFailure == OnFailure::kStop || !ofOneFrame) {
        throw;
      }
      return error.what();
    }
  }

  /// Null at the end.
  std::unique_ptr<Work> Read() {
    if (next_ == job_.frames.size() || IsGivenUp()) {
      return {};
    }
    auto work = std::make_unique<Work>(Work{job_.frames[next_]});
    ++next_;
    Attempt(*work, [&] {
      work->input = source_.Read(work->frame);
      if (!work->input) {
        ReplaceMissing(*work);
      }
    });
    return work;
  }

  [[noreturn]] void RefuseMissing(std::int32_t frame) const {
    const SourceTraits& traits = source_.Traits();
    const bool isOutside =
        traits.firstFrame && traits.lastFrame && (frame < *traits.firstFrame || frame > *traits.lastFrame);
    Refuse(ExitCode::kInput, "the input has no frame {}{}; try --missing skip, or --missing black", frame,
           isOutside ? fmt::format(" (it has {} to {})", *traits.firstFrame, *traits.lastFrame) : "");
  }

  /// What is known to end the run is better known before any work.
  void CheckFrames() const {
    const SourceTraits& traits = source_.Traits();
    if (job_.missing != MissingPolicy::kError || job_.onFailure != OnFailure::kStop || !traits.firstFrame ||
        !traits.lastFrame) {
      return;
    }
    for (const std::int32_t frame : job_.frames) {
      if (frame < *traits.firstFrame || frame > *traits.lastFrame) {
        RefuseMissing(frame);
      }
    }
  }

  void ReplaceMissing(Work& work) const {
    const SourceTraits& traits = source_.Traits();
    switch (job_.missing) {
      case MissingPolicy::kError:
        RefuseMissing(work.frame);
      case MissingPolicy::kSkip:
        work.skipped = true;
        return;
      case MissingPolicy::kBlack: {
        work.input = {Image(traits.width, traits.height, traits.depth),
                      {.hasAlpha = traits.hasAlpha, .pixelAspect = traits.pixelAspect}};
        const PF_LayerDef world = work.input->image.World();
        if (!traits.hasAlpha) {
          minihost::FillPixels({255, 0, 0, 0}, minihost::BoundsOf(world), world, traits.depth);
        }
      }
    }
  }

  void Process(Work& work) {
    if (!work.input || IsGivenUp()) {
      return;
    }
    Attempt(work, [&] {
      const Image& input = work.input->image;
      Image output(input.Width(), input.Height(), input.PixelDepth(), minihost::Clearing::kNone);
      if (!Render(work, output)) {
        return;
      }
      PictureTraits traits = std::move(work.input->traits);
      if (job_.addedAlpha == AddedAlpha::kFromEffect) {
        traits.hasAlpha = true;
        traits.isSnowAlone = true;
      }
      work.input.reset();
      work.encoded = sink_.Encode(work.frame, output, traits);
    });
    work.input.reset();
  }

  /// False when the frame was given up on the way.
  bool Render(const Work& work, Image& output) {
    bool givenUp = false;
    const auto goOn = [&] {
      if (!givenUp) {
        givenUp = IsGivenUp();
      }
      return givenUp ? minihost::Verdict::kStop : minihost::Verdict::kContinue;
    };
    minihost::Frame frame;
    frame.time = work.frame * job_.timing.timeStep;
    frame.timing = job_.timing;
    frame.downsampleX = job_.downsampleX;
    frame.downsampleY = job_.downsampleY;
    frame.pixelAspectRatio = job_.pixelAspect;
    frame.input = &work.input->image;
    frame.output = &output;
    frame.hooks = {goOn, [&](int, int) { return goOn(); }};

    Instance instance = instances_.Take(work.frame);
    const minihost::RenderResult result = instance.Render(frame);
    if (givenUp) {
      return false;
    }
    if (result.err != PF_Err_NONE) {
      Refuse(ExitCode::kFrameFailed, "frame {} failed with code {}{}{}", work.frame, result.err,
             result.message.empty() ? "" : ": ", result.message);
    }
    instances_.GiveBack(std::move(instance), work.frame);
    return true;
  }

  void Write(Work& work) {
    if (failure_) {
      return;
    }
    try {
      Settle(work);
    } catch (const ToolError& error) {
      failure_ = std::current_exception();
      ended_ = true;
      ReportTheLast(work, error.what());
    } catch (...) {
      failure_ = std::current_exception();
      ended_ = true;
    }
  }

  /// What it throws ends the run.
  void Settle(Work& work) {
    if (work.failure) {
      summary_.failed.push_back({work.frame, ForgivenMessage(work.failure)});
      Report(work, FrameOutcome::kFailed, summary_.failed.back().message);
    } else if (work.skipped) {
      summary_.skipped.push_back(work.frame);
      Report(work, FrameOutcome::kSkipped, "the input has no such frame");
    } else if (work.encoded) {
      sink_.Write(work.frame, std::move(work.encoded));
      ++summary_.written;
      Report(work, FrameOutcome::kWritten);
    }
  }

  void Report(const Work& work, FrameOutcome outcome, std::string reason = {}) const {
    if (hooks_.report) {
      hooks_.report({work.frame, outcome, std::move(reason)});
    }
  }

  /// The run has failed already; nothing can make it worse.
  void ReportTheLast(const Work& work, const char* reason) const {
    try {
      Report(work, FrameOutcome::kFailed, reason);
    } catch (...) {
      return;
    }
  }

  const RenderJob& job_;
  FrameSource& source_;
  FrameSink& sink_;
  const RunHooks& hooks_;
  InstancePool instances_;
  std::size_t next_ = 0;             // of the reading stage
  std::atomic<bool> ended_ = false;  // by a failure
  RunSummary summary_;               // of the writing stage, like the failure
  std::exception_ptr failure_;
};

}  // namespace

ExitCode CodeOf(const RunSummary& summary) {
  if (summary.interrupted) {
    return ExitCode::kInterrupted;
  }
  return summary.failed.empty() ? ExitCode::kDone : ExitCode::kFrameFailed;
}

std::size_t FramesUnderWay(int jobs, const SourceTraits& traits) {
  constexpr std::size_t kPictures = 3;  // input, output, encoded
  const std::size_t picture = static_cast<std::size_t>(traits.width) *
                              static_cast<std::size_t>(traits.height) * BytesPerPixel(traits.depth);
  const std::size_t most = kPipelineMemory / (kPictures * std::max<std::size_t>(picture, 1));
  return std::clamp<std::size_t>(static_cast<std::size_t>(jobs) + 2, 1, std::max<std::size_t>(most, 1));
}

RunSummary RunPipeline(const RenderJob& job, FrameSource& source, FrameSink& sink, const RunHooks& hooks) {
  if (job.timing.localTimeStep != job.timing.timeStep) {
    throw std::invalid_argument(fmt::format("a frame lasts {} ticks in the output but {} in the layer",
                                            job.timing.timeStep, job.timing.localTimeStep));
  }
  return Pipeline(job, source, sink, hooks).Go();
}

}  // namespace cli
