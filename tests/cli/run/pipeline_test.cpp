// The laws of the pipeline: order, bounds, the same bytes at any number of jobs, and a clean end on all ways.
#include "cli/run/pipeline.h"

#include <gmock/gmock.h>
#include <signal.h>

#include <atomic>
#include <chrono>
#include <map>
#include <set>
#include <thread>

#include "cli/report/interrupt.h"
#include "hostapi/commands.h"
#include "minihost/picture/copy.h"
#include "tests/support/cli/expect_error.h"

namespace {

using cli::AddedAlpha;
using cli::ExitCode;
using cli::FrameOutcome;
using cli::FrameReport;
using cli::MissingPolicy;
using cli::OnFailure;
using cli::ToolError;
using minihost::Depth;
using minihost::Image;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

using Numbers = std::set<std::int32_t>;

cli::SourceTraits TraitsOf(int width, int height, Depth depth) {
  cli::SourceTraits traits;
  traits.width = width;
  traits.height = height;
  traits.depth = depth;
  return traits;
}

class FakeSource : public cli::FrameSource {
 public:
  const cli::SourceTraits& Traits() const override { return traits; }

  std::optional<cli::Picture> Read(std::int32_t frame) override {
    if (unreadable.contains(frame)) {
      throw ToolError(ExitCode::kInput, "unreadable");
    }
    if (absent.contains(frame)) {
      return {};
    }
    ++reads;
    cli::Picture picture{Image(traits.width, traits.height, traits.depth), {.hasAlpha = traits.hasAlpha}};
    const PF_LayerDef world = picture.image.World();
    const PF_Pixel color{255, static_cast<std::uint8_t>(frame & 63), 60, 90};
    minihost::FillPixels(color, minihost::BoundsOf(world), world, traits.depth);
    return picture;
  }

  cli::SourceTraits traits = TraitsOf(64, 48, Depth::kBits8);
  Numbers unreadable;
  Numbers absent;
  std::atomic<std::size_t> reads = 0;
};

struct Pixels : cli::EncodedFrame {
  std::string bytes;
};

class FakeSink : public cli::FrameSink {
 public:
  std::unique_ptr<cli::EncodedFrame> Encode(std::int32_t frame, const Image& image,
                                            const cli::PictureTraits& traits) const override {
    if (onEncode) {
      onEncode(frame);
    }
    if (unencodable.contains(frame)) {
      throw ToolError(ExitCode::kOutput, "unencodable");
    }
    auto pixels = std::make_unique<Pixels>();
    pixels->bytes.assign(reinterpret_cast<const char*>(image.Data()),
                         image.RowBytes() * static_cast<std::size_t>(image.Height()));
    pixels->bytes += traits.hasAlpha ? 'a' : 'o';
    return pixels;
  }

  void Write(std::int32_t frame, std::unique_ptr<cli::EncodedFrame> encoded) override {
    if (unwritable.contains(frame)) {
      throw ToolError(ExitCode::kOutput, "unwritable");
    }
    order.push_back(frame);
    bytes[frame] = static_cast<Pixels&>(*encoded).bytes;
  }

  void Finish() override { finished = true; }

  std::function<void(std::int32_t)> onEncode;
  Numbers unencodable;
  Numbers unwritable;
  std::vector<std::int32_t> order;
  std::map<std::int32_t, std::string> bytes;
  bool finished = false;
};

constexpr std::int32_t kFailingTime = 5;

/// The effect, but for one frame that it fails on.
PF_Err FailingEntry(PF_Cmd cmd, PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* params[],
                    PF_LayerDef* output, void* extra) {
  const PF_Err err = MainEntry(cmd, in_data, out_data, params, output, extra);
  return cmd == PF_Cmd_SMART_RENDER && in_data->current_time == kFailingTime ? 77 : err;
}

std::atomic<int> instancesMade = 0;

PF_Err CountingEntry(PF_Cmd cmd, PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* params[],
                     PF_LayerDef* output, void* extra) {
  instancesMade += cmd == PF_Cmd_SEQUENCE_SETUP ? 1 : 0;
  return MainEntry(cmd, in_data, out_data, params, output, extra);
}

cli::RenderJob JobOf(std::vector<std::int32_t> frames, minihost::EntryPoint entry = &MainEntry) {
  const auto effect = minihost::Effect::Linked(entry);
  minihost::ParameterSet parameters(effect->SharedParameters());
  parameters.Set("Flakes", minihost::Track(300.0));
  parameters.Set("Speed", minihost::Track({{0, 20.0}, {8, 900.0}}));
  cli::RenderJob job{.effect = effect, .parameters = parameters};
  job.timing = {24, 1, 1, 180};
  job.frames = std::move(frames);
  job.jobs = 2;
  return job;
}

TEST(Pipeline, WritesInOrderTheSameBytesAtAnyNumberOfJobsAsForEachFrameAlone) {
  cli::RenderJob job = JobOf({-3, -2, -1, 0, 1, 2, 3, 4, 9, 10, 7}, &CountingEntry);
  std::map<std::int32_t, std::string> alone;
  for (const std::int32_t frame : job.frames) {
    cli::RenderJob one = job;
    one.frames = {frame};
    FakeSource source;
    FakeSink sink;
    cli::RunPipeline(one, source, sink);
    alone.merge(sink.bytes);
  }
  EXPECT_NE(alone[9], alone[10]);
  for (const int jobs : {1, 2, 4}) {
    job.jobs = jobs;
    FakeSource source;
    FakeSink sink;
    instancesMade = 0;
    const cli::RunSummary summary =
        cli::RunPipeline(job, source, sink, {.report = [&](const FrameReport& report) {
                           EXPECT_EQ(report.outcome, FrameOutcome::kWritten);
                           EXPECT_EQ(sink.order.back(), report.frame);
                         }});
    EXPECT_THAT(sink.order, ElementsAreArray(job.frames)) << jobs;
    for (const auto& [frame, bytes] : alone) {
      EXPECT_TRUE(sink.bytes[frame] == bytes) << "frame " << frame << ", jobs " << jobs;
    }
    EXPECT_LE(instancesMade, jobs) << "none is left unused while another is made";
    EXPECT_TRUE(sink.finished);
    EXPECT_EQ(summary.written, job.frames.size());
    EXPECT_EQ(CodeOf(summary), ExitCode::kDone);
  }
}

TEST(Pipeline, HoldsAsManyPicturesAsItMayAndNoMore) {
  cli::RenderJob job = JobOf({});
  for (std::int32_t frame = 0; frame < 40; ++frame) {
    job.frames.push_back(frame);
  }
  job.jobs = 3;
  FakeSource source;
  FakeSink sink;
  const std::size_t bound = cli::FramesUnderWay(job.jobs, source.traits);
  EXPECT_EQ(bound, 5u);
  // The first frame holds up all the others until no more are read.
  sink.onEncode = [&](std::int32_t frame) {
    using namespace std::chrono_literals;
    if (frame != 0) {
      return;
    }
    for (int i = 0; i < 6000 && source.reads < bound; ++i) {
      std::this_thread::sleep_for(10ms);
    }
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(source.reads, bound);
  };
  cli::RunPipeline(job, source, sink);
  EXPECT_EQ(sink.order.size(), 40u);

  EXPECT_EQ(cli::FramesUnderWay(64, TraitsOf(7680, 4320, Depth::kFloat)), 2u);
  EXPECT_EQ(cli::FramesUnderWay(64, TraitsOf(32767, 32767, Depth::kFloat)), 1u);
}

TEST(Pipeline, AFailureOfAnyStageArrivesAsItIsAfterTheFramesBeforeIt) {
  struct Fault {
    ExitCode code;
    const char* message;
    bool ofOneFrame;
    std::function<void(FakeSource&, FakeSink&, cli::RunHooks&)> plant;
  };
  const Fault faults[] = {
      {ExitCode::kInput, "unreadable", true, [](auto& source, auto&, auto&) { source.unreadable = {5}; }},
      {ExitCode::kInput, "no frame 5", true, [](auto& source, auto&, auto&) { source.absent = {5}; }},
      {ExitCode::kFrameFailed, "frame 5 failed with code 77", true, [](auto&, auto&, auto&) {}},
      {ExitCode::kOutput, "unencodable", false, [](auto&, auto& sink, auto&) { sink.unencodable = {5}; }},
      {ExitCode::kOutput, "unwritable", false, [](auto&, auto& sink, auto&) { sink.unwritable = {5}; }},
      {ExitCode::kOutput, "unnoted", false,
       [](auto&, auto&, auto& hooks) {
         hooks.report = [](const FrameReport& report) {
           if (report.frame == 4) {
             throw ToolError(ExitCode::kOutput, "unnoted");
           }
         };
       }},
  };
  for (const Fault& fault : faults) {
    for (const OnFailure onFailure : {OnFailure::kStop, OnFailure::kKeepGoing}) {
      for (const int jobs : {1, 4}) {
        SCOPED_TRACE(testing::Message() << fault.message << ", " << int(onFailure) << ", jobs " << jobs);
        const bool failsToRender = fault.code == ExitCode::kFrameFailed;
        cli::RenderJob job = JobOf({}, failsToRender ? &FailingEntry : &MainEntry);
        for (std::int32_t frame = 1; frame <= 30; ++frame) {
          job.frames.push_back(frame);
        }
        job.jobs = jobs;
        job.onFailure = onFailure;
        FakeSource source;
        FakeSink sink;
        cli::RunHooks hooks;
        fault.plant(source, sink, hooks);
        if (onFailure == OnFailure::kStop || !fault.ofOneFrame) {
          ExpectError(fault.code, fault.message, [&] { cli::RunPipeline(job, source, sink, hooks); });
          EXPECT_THAT(sink.order, ElementsAre(1, 2, 3, 4));
          EXPECT_LE(source.reads, 4 + cli::FramesUnderWay(jobs, source.traits)) << "what nobody waits for";
          EXPECT_FALSE(sink.finished);
        } else {
          const cli::RunSummary summary = cli::RunPipeline(job, source, sink, hooks);
          std::erase(job.frames, 5);
          EXPECT_THAT(sink.order, ElementsAreArray(job.frames));
          EXPECT_TRUE(sink.finished);
          ASSERT_EQ(summary.failed.size(), 1u);
          EXPECT_EQ(summary.failed[0].frame, 5);
          EXPECT_THAT(summary.failed[0].message, testing::HasSubstr(fault.message));
          EXPECT_EQ(CodeOf(summary), ExitCode::kFrameFailed);
        }
      }
    }
  }
}

TEST(Pipeline, MissingFramesAreSkippedOrBlack) {
  cli::RenderJob job = JobOf({1, 2, 3});
  job.parameters.Set("Flakes", minihost::Track(0.0));
  for (const bool hasAlpha : {false, true}) {
    FakeSource source;
    source.traits.hasAlpha = hasAlpha;
    source.absent = {2};
    job.missing = MissingPolicy::kSkip;
    FakeSink skipping;
    const cli::RunSummary summary = cli::RunPipeline(job, source, skipping);
    EXPECT_THAT(skipping.order, ElementsAre(1, 3));
    EXPECT_THAT(summary.skipped, ElementsAre(2));
    EXPECT_EQ(CodeOf(summary), ExitCode::kDone);

    job.missing = MissingPolicy::kBlack;
    job.addedAlpha = AddedAlpha::kNone;
    FakeSink black;
    cli::RunPipeline(job, source, black);
    EXPECT_THAT(black.order, ElementsAre(1, 2, 3));
    EXPECT_EQ(black.bytes[2].substr(0, 4), hasAlpha ? std::string(4, '\0') : std::string("\xff\0\0\0", 4));
    EXPECT_EQ(black.bytes[1].back(), hasAlpha ? 'a' : 'o');
    job.addedAlpha = AddedAlpha::kFromEffect;
    cli::RunPipeline(job, source, black);
    EXPECT_EQ(black.bytes[1].back(), 'a');
  }
}

TEST(Pipeline, AnInterruptEndsTheRunAndKeepsWhatIsComplete) {
  cli::RenderJob job = JobOf({});
  for (std::int32_t frame = 0; frame < 200; ++frame) {
    job.frames.push_back(frame);
  }
  FakeSource source;
  FakeSink sink;
  std::atomic<bool> interrupted = false;
  const cli::RunSummary summary = cli::RunPipeline(job, source, sink,
                                                   {.interrupted = [&] { return interrupted.load(); },
                                                    .report =
                                                        [&](const FrameReport& report) {
                                                          if (report.frame == 2) {
                                                            interrupted = true;
                                                          }
                                                        }});
  EXPECT_TRUE(summary.interrupted);
  EXPECT_EQ(CodeOf(summary), ExitCode::kInterrupted);
  EXPECT_GE(summary.written, 3u);
  EXPECT_EQ(summary.written, sink.order.size());
  EXPECT_FALSE(sink.finished);

  // In the middle of a frame: the stages ask a few times, the effect on and on.
  job.frames = {0};
  job.parameters.Set("Flakes", minihost::Track(50'000.0));
  std::atomic<int> asked = 0;
  FakeSink empty;
  const cli::RunSummary early =
      cli::RunPipeline(job, source, empty, {.interrupted = [&] { return ++asked > 20; }});
  EXPECT_TRUE(early.interrupted);
  EXPECT_THAT(empty.order, IsEmpty());
  EXPECT_LT(asked, 40);
}

}  // namespace
