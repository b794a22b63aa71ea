// Level 5: parameters and times of every value, sense or not.
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <ctime>
#include <initializer_list>
#include <memory>

#include "cli/check/level.h"
#include "cli/check/random.h"
#include "cli/check/random_look.h"
#include "cli/check/scenario.h"
#include "cli/check/wild.h"

namespace cli::check {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint32_t kWildScales[] = {0, 1, 30, 30'000, INT_MAX, 0x80000000u, UINT_MAX};

class Values {
 public:
  Values(const LevelTask& task, Subject& subject)
      : task_(task), subject_(subject), flakes_(subject.IndexOf("Flakes")) {
    for (const minihost::Depth depth : kDepths) {
      stages_.push_back(std::make_unique<Stage>(Layout{12, 9, depth, 1}));
    }
  }

  void Valid(Tally::Check check) {
    Random random(task_.seed);
    for (std::uint64_t i = 0; i < task_.Tries(1'000'000); ++i) {
      task_.tally.Try(check, "vector {} of seed {}", i, task_.seed);
      minihost::Instance instance(subject_.Effect(),
                                  RandomLook(random, subject_.Effect()->SharedParameters(), 24));
      Stage& stage = AnyStage(random);
      minihost::Frame frame = stage.Begin(random.Of(kProtocols), random.Between(0, 6));
      frame.timing.shutterDegrees = random.Real(0, 720);
      subject_.host.root = AnyRoot(random);
      Expect(check, stage, instance, frame, {0});
    }
  }

  // Some of the values are beyond every range, and others at each reading.
  void Wild(Tally::Check check) {
    Random random(task_.seed + 1);
    minihost::Instance instance = subject_.Make({});
    for (std::uint64_t i = 0; i < task_.Tries(300'000); ++i) {
      task_.tally.Try(check, "vector {} of seed {}", i, task_.seed);
      subject_.host.onParameter = WildParameters(random, 1 + random.Below(12), flakes_);
      subject_.host.root = AnyRoot(random);
      Stage& stage = AnyStage(random);
      Expect(check, stage, instance, stage.Begin(random.Of(kProtocols), 1), {0});
      subject_.host.onParameter = nullptr;
    }
  }

  // Times, steps, scales and shutter angles; where no time can be made of them, the background is the frame.
  void Times(Tally::Check check) {
    Random random(task_.seed + 2);
    minihost::Instance instance = subject_.Make({{"Flakes", 20}});
    for (std::uint64_t i = 0; i < task_.Tries(40'000); ++i) {
      const std::int32_t time = WildInteger(random), step = WildInteger(random),
                         localStep = WildInteger(random), shutter = WildInteger(random);
      const std::uint32_t scale = random.Of(kWildScales);
      task_.tally.Try(check, "time {} of {} a second, step {}, layer's step {}, shutter {}/65536", time,
                      scale, step, localStep, shutter);
      subject_.host.before = [&](const CommandView& command) {
        command.in.current_time = time;
        command.in.time_step = step;
        command.in.local_time_step = localStep;
        command.in.time_scale = scale;
        command.in.shutter_angle = shutter;
        return LyingHost::Pass::kOn;
      };
      Stage& stage = AnyStage(random);
      // The layer is there at the host's own time alone, so that a smart render would be a fault.
      minihost::Frame frame = stage.Begin(minihost::Protocol::kPlain, 1);
      const bool isTime = time >= 0 && scale != 0 && localStep != 0;
      const auto end = Clock::now() + std::chrono::milliseconds(5);  // the latest times take minutes
      frame.hooks.abort = [end] {
        return Clock::now() > end ? minihost::Verdict::kStop : minihost::Verdict::kContinue;
      };
      if (isTime) {
        Expect(check, stage, instance, frame, {0, minihost::kRenderStopped});
      } else {
        Expect(check, stage, instance, frame, {0});
      }
      subject_.host.before = nullptr;
      task_.tally.Expect(check, isTime || stage.output.HasPixels(stage.stripes), "not the background");
    }
  }

  // The layer's pixels are whatever bytes there are: channels above white, no numbers.
  void Pictures(Tally::Check check) {
    Random random(task_.seed + 4);
    minihost::Instance instance = subject_.Make({{"Flakes", 40}, {"Size", 8}, {"Scene Depth", 200}});
    for (std::uint64_t i = 0; i < task_.Tries(40'000); ++i) {
      task_.tally.Try(check, "picture {} of seed {}", i, task_.seed);
      Stage& stage = AnyStage(random);
      std::vector<std::byte> pixels(stage.stripes.size());
      std::ranges::generate(pixels, [&random] { return std::byte(random.Next() & 0xFF); });
      stage.input.SetPixels(pixels);
      subject_.host.root = AnyRoot(random);
      const minihost::Frame frame = stage.Begin(random.Of(kProtocols), 1);
      const PF_Err code = instance.Render(frame).err;
      task_.tally.Expect(check, code == PF_Err_NONE, fmt::format("returned {}", code));
      task_.tally.Expect(check, stage.input.HasPixels(pixels), "the input's pixels were changed");
      stage.input.SetPixels(stage.stripes);
      const std::string damage = Damage(stage);
      task_.tally.Expect(check, damage.empty(), damage);
    }
  }

  // Long frames end at once when the host wants it, at the first questions, and ask it often enough.
  void Hopeless(Tally::Check check) {
    Random random(task_.seed + 3);
    const struct {
      const char* name;
      std::int32_t time;
      Subject::Numbers look;
    } rows[] = {
        {"the latest time", INT_MAX, {{"Flakes", 20}}},
        {"two million flakes over the picture",
         1,
         {{"Flakes", 2'000'000}, {"Size", 15}, {"Scene Depth", 100}}},
    };
    for (const auto& [name, time, look] : rows) {
      for (const minihost::Protocol protocol : kProtocols) {
        for (const auto& stage : stages_) {
          task_.tally.Try(check, "{}, {}, {}", name, NameOf(protocol),
                          NameOf(stage->output.Picture().PixelDepth()));
          minihost::Instance instance = subject_.Make(look);
          minihost::Frame frame = stage->Begin(protocol, time);
          const std::uint64_t goesOn = random.Below(5);
          std::uint64_t asked = 0;
          std::clock_t lastAsked = std::clock();  // of the processor: others may keep it busy
          double longest = 0;
          const auto ask = [&] {
            const std::clock_t now = std::clock();
            longest = std::max(longest, static_cast<double>(now - lastAsked) / CLOCKS_PER_SEC);
            lastAsked = now;
            return asked++ >= goesOn ? minihost::Verdict::kStop : minihost::Verdict::kContinue;
          };
          frame.hooks.abort = ask;
          frame.hooks.progress = [&](int, int) { return ask(); };
          Expect(check, *stage, instance, frame, {minihost::kRenderStopped});
          ask();
          // Some milliseconds; sanitizers and emulators are given their time.
          task_.tally.Expect(check, longest < 2, fmt::format("did not ask for {:.2f} seconds", longest));
        }
      }
    }
  }

 private:
  // The fast loop, and now and then the plain one.
  static LyingHost::Root AnyRoot(Random& random) {
    return random.OneIn(4) ? LyingHost::Root::kDoubtful : LyingHost::Root::kRight;
  }

  Stage& AnyStage(Random& random) { return *stages_[random.Below(stages_.size())]; }

  // `promised` are the codes that are right.
  void Expect(Tally::Check check, const Stage& stage, minihost::Instance& instance,
              const minihost::Frame& frame, std::initializer_list<PF_Err> promised) {
    const PF_Err code = instance.Render(frame).err;
    task_.tally.Expect(check, std::ranges::find(promised, code) != promised.end(),
                       fmt::format("returned {}", code));
    const std::string damage = Damage(stage);
    task_.tally.Expect(check, damage.empty(), damage);
    const std::string complaints = Complaints(instance);
    task_.tally.Expect(check, complaints.empty(), complaints);
  }

  const LevelTask& task_;
  Subject& subject_;
  std::int32_t flakes_;
  std::vector<std::unique_ptr<Stage>> stages_;
};

}  // namespace

void CheckValues(const LevelTask& task) {
  Subject subject(task.module);
  Values values(task, subject);
  values.Valid(task.tally.Begin("valid parameters at random", "frames"));
  values.Wild(task.tally.Begin("parameters beyond their ranges", "frames"));
  values.Times(task.tally.Begin("times that make no sense", "frames"));
  values.Pictures(task.tally.Begin("pictures of any bytes", "frames"));
  values.Hopeless(task.tally.Begin("hopeless frames ask whether to go on", "frames"));
}

}  // namespace cli::check
