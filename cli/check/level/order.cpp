// Level 2: commands in every order.
#include <fmt/format.h>

#include <climits>
#include <cstring>
#include <iterator>
#include <memory>
#include <utility>

#include "cli/check/level.h"
#include "cli/check/random.h"
#include "cli/check/scenario.h"

namespace cli::check {
namespace {

enum class Kind {
  kIgnored,  // answered with 0, nothing touched, no host function called
  kAbout,
  kSetUp,
  kSetDown,
  kInterface,
  kFrame,
  kPreRenderAlone,
  kRenderAlone,  // a smart render whose first step has left nothing
  kAnotherLoad,  // the global and the parameter set-up and the global set-down, of the same module
};

struct Step {
  const char* name;
  Kind kind;
  PF_Cmd number = 0;
};

constexpr Step kSteps[] = {
    {"about", Kind::kAbout},
    {"sequence set-up", Kind::kSetUp, PF_Cmd_SEQUENCE_SETUP},
    {"sequence re-set-up", Kind::kIgnored, PF_Cmd_SEQUENCE_RESETUP},
    {"sequence flatten", Kind::kIgnored, PF_Cmd_SEQUENCE_FLATTEN},
    {"sequence set-down", Kind::kSetDown, PF_Cmd_SEQUENCE_SETDOWN},
    {"dialog", Kind::kIgnored, PF_Cmd_DO_DIALOG},
    {"frame set-up", Kind::kIgnored, PF_Cmd_FRAME_SETUP},
    {"frame set-down", Kind::kIgnored, PF_Cmd_FRAME_SETDOWN},
    {"command 2", Kind::kIgnored, 2},
    {"command 20", Kind::kIgnored, 20},
    {"command 25", Kind::kIgnored, 25},
    {"command -1", Kind::kIgnored, -1},
    {"the least command", Kind::kIgnored, INT_MIN},
    {"the greatest command", Kind::kIgnored, INT_MAX},
    {"parameter changed", Kind::kInterface, PF_Cmd_USER_CHANGED_PARAM},
    {"interface update", Kind::kInterface, PF_Cmd_UPDATE_PARAMS_UI},
    {"plain render", Kind::kFrame, PF_Cmd_RENDER},
    {"smart frame", Kind::kFrame, PF_Cmd_SMART_RENDER},
    {"pre-render alone", Kind::kPreRenderAlone},
    {"smart render alone", Kind::kRenderAlone},
    {"another load", Kind::kAnotherLoad},
};

// An instance that has been set up only when a step did it.
class Sequence {
 public:
  Sequence(Subject& subject, Stage& stage, const std::vector<std::byte>& whole)
      : subject_(subject), stage_(stage), whole_(whole) {
    subject_.host.before = [](const CommandView& command) {
      return command.number == PF_Cmd_SEQUENCE_SETUP ? LyingHost::Pass::kHold : LyingHost::Pass::kOn;
    };
    instance_ = std::make_unique<minihost::Instance>(subject_.Make(kLook));
    subject_.host.before = nullptr;
    subject_.host.after = [this](const CommandView& command, PF_Err) {
      hasRecord_ = command.out.sequence_data != nullptr;
    };
  }
  ~Sequence() {
    instance_.reset();
    subject_.host.Reset();
  }
  Sequence(const Sequence&) = delete;
  Sequence& operator=(const Sequence&) = delete;

  // What is wrong with it.
  std::string Do(const Step& step) {
    std::string wrong = Run(step);
    if (wrong.empty() && hasRecord_ != shouldHaveRecord_) {
      wrong = hasRecord_ ? "a record was left" : "there is no record";
    }
    return wrong.empty() ? Complaints(*instance_) : wrong;
  }

  static inline const Subject::Numbers kLook{{"Flakes", 12}, {"Size", 6}, {"Scene Depth", 300}};

 private:
  std::string Run(const Step& step) {
    switch (step.kind) {
      case Kind::kAbout:
        return About();
      case Kind::kIgnored:
        return Ignored(step.number);
      case Kind::kSetUp:
      case Kind::kSetDown:
        shouldHaveRecord_ = step.kind == Kind::kSetUp;
        return Code(instance_->Send(step.number).err, 0);
      case Kind::kInterface:
        return Code(instance_
                        ->UpdateParamsUi(step.number == PF_Cmd_UPDATE_PARAMS_UI
                                             ? minihost::UiEvent::kUpdate
                                             : minihost::UiEvent::kUserChangedParameter)
                        .err,
                    0);
      case Kind::kFrame:
        return Frame(step.number == PF_Cmd_RENDER ? minihost::Protocol::kPlain : minihost::Protocol::kSmart);
      case Kind::kPreRenderAlone:
        return PreRenderAlone();
      case Kind::kRenderAlone:
        return RenderAlone();
      case Kind::kAnotherLoad:
        return AnotherLoad();
    }
    return {};
  }

  static std::string Code(PF_Err code, PF_Err promised) {
    return code == promised ? "" : fmt::format("returned {} in place of {}", code, promised);
  }

  std::string Ignored(PF_Cmd number) {
    PF_OutData outBefore{};
    bool isSame = false;
    subject_.host.before = [&](const CommandView& command) {
      std::memcpy(&outBefore, &command.out, sizeof outBefore);
      return LyingHost::Pass::kOn;
    };
    const auto after = std::exchange(subject_.host.after, [&](const CommandView& command, PF_Err) {
      isSame = std::memcmp(&outBefore, &command.out, sizeof outBefore) == 0;
    });
    subject_.host.isRecording = true;
    const PF_Err code = instance_->Send(number).err;
    const bool called = !subject_.host.record.empty();
    subject_.host.isRecording = false;
    subject_.host.record.clear();
    subject_.host.before = nullptr;
    subject_.host.after = after;
    if (!isSame || called) {
      return isSame ? "called the host" : "changed the host's record";
    }
    return Code(code, 0);
  }

  std::string Frame(minihost::Protocol protocol) {
    shouldHaveRecord_ = true;
    const PF_Err code = instance_->Render(stage_.Begin(protocol, kTime)).err;
    if (code != PF_Err_NONE) {
      return Code(code, 0);
    }
    return stage_.output.HasPixels(whole_) ? "" : "not the frame of a fresh instance";
  }

  std::string PreRenderAlone() {
    subject_.host.before = [](const CommandView& command) {
      return command.number == PF_Cmd_SMART_RENDER ? LyingHost::Pass::kHold : LyingHost::Pass::kOn;
    };
    const PF_Err code = instance_->Render(stage_.Begin(minihost::Protocol::kSmart, kTime)).err;
    subject_.host.before = nullptr;
    return Code(code, 0);
  }

  std::string RenderAlone() {
    void* left = nullptr;
    subject_.host.before = [&](const CommandView& command) {
      if (command.number == PF_Cmd_SMART_RENDER) {
        left = std::exchange(command.SmartRender().input->pre_render_data, nullptr);
      }
      return LyingHost::Pass::kOn;
    };
    const auto after = std::exchange(subject_.host.after, [&](const CommandView& command, PF_Err) {
      if (command.number == PF_Cmd_SMART_RENDER) {
        command.SmartRender().input->pre_render_data = left;
      }
    });
    const PF_Err code = instance_->Render(stage_.Begin(minihost::Protocol::kSmart, kTime)).err;
    subject_.host.before = nullptr;
    subject_.host.after = after;
    return Code(code, PF_Err_OUT_OF_MEMORY);
  }

  // This one and the next are of the effect, not of the instance and its record.
  std::string About() {
    const auto after = std::exchange(subject_.host.after, nullptr);
    const bool isEmpty = subject_.Effect()->About().empty();
    subject_.host.after = after;
    return isEmpty ? "said nothing" : "";
  }

  std::string AnotherLoad() {
    const auto after = std::exchange(subject_.host.after, nullptr);
    const std::size_t declared = minihost::Effect::Linked(&subject_.host.Run)->Parameters().size();
    subject_.host.after = after;
    const bool isSame = declared == subject_.Effect()->Parameters().size();
    return isSame ? "" : "declared other parameters";
  }

  static constexpr std::int32_t kTime = 1;

  Subject& subject_;
  Stage& stage_;
  const std::vector<std::byte>& whole_;
  std::unique_ptr<minihost::Instance> instance_;
  bool hasRecord_ = false;
  bool shouldHaveRecord_ = false;
};

// Every sequence of `length` steps, the number of each in a counter of base std::size(kSteps).
void WalkSequences(const LevelTask& task, Subject& subject, Stage& stage, const std::vector<std::byte>& whole,
                   int length) {
  const Tally::Check check =
      task.tally.Begin(fmt::format("every sequence of {} commands", length), "sequences");
  std::uint64_t count = 1;
  for (int i = 0; i < length; ++i) {
    count *= std::size(kSteps);
  }
  for (std::uint64_t number = 0; number < count; ++number) {
    Sequence sequence(subject, stage, whole);
    task.tally.Try(check, "sequence {}", number);
    std::uint64_t rest = number;
    std::string soFar;
    for (int i = 0; i < length; ++i, rest /= std::size(kSteps)) {
      const Step& step = kSteps[rest % std::size(kSteps)];
      const std::string wrong = sequence.Do(step);
      soFar += fmt::format("{}{}", soFar.empty() ? "" : ", ", step.name);
      if (!task.tally.Expect(check, wrong.empty(), fmt::format("{}: {}", soFar, wrong))) {
        break;
      }
    }
  }
}

void WalkAtRandom(const LevelTask& task, Subject& subject, Stage& stage,
                  const std::vector<std::byte>& whole) {
  const Tally::Check check = task.tally.Begin("commands at random", "commands");
  Random random(task.seed);
  std::unique_ptr<Sequence> sequence;
  for (std::uint64_t i = 0; i < task.Tries(1'000'000); ++i) {
    if (!sequence || random.OneIn(100)) {
      sequence.reset();  // before the next one begins
      sequence = std::make_unique<Sequence>(subject, stage, whole);
    }
    const Step& step = kSteps[random.Below(std::size(kSteps))];
    task.tally.Try(check, "command {} of seed {}: {}", i, task.seed, step.name);
    const std::string wrong = sequence->Do(step);
    if (!task.tally.Expect(check, wrong.empty(), wrong)) {
      sequence.reset();
    }
  }
}

}  // namespace

void CheckOrder(const LevelTask& task) {
  Subject subject(task.module);
  Stage stage({.width = 9, .height = 7, .padding = 1});
  minihost::Instance instance = subject.Make(Sequence::kLook);
  const std::vector<std::byte> whole = stage.Render(instance, stage.Begin(minihost::Protocol::kSmart, 1));
  for (int length = 1; length <= (task.effort == Effort::kFull ? 4 : 3); ++length) {
    WalkSequences(task, subject, stage, whole, length);
  }
  WalkAtRandom(task, subject, stage, whole);
}

}  // namespace cli::check
