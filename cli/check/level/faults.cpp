// Level 1: every service fails, at every call, in every way.
#include <fmt/format.h>

#include <array>

#include "cli/check/kept_sums.h"
#include "cli/check/level.h"
#include "cli/check/level/command_faults.h"
#include "cli/check/promise.h"
#include "cli/check/report.h"
#include "cli/check/scenario.h"

namespace cli::check {
namespace {

constexpr std::uint64_t kEachCallTo = 8;  // of a quick run; beyond, some

// One frame of one kind, walked through.
class Walk {
 public:
  Walk(const LevelTask& task, Subject& subject, const Scenario& scenario, minihost::Depth depth,
       minihost::Protocol protocol, const std::array<Tally::Check, kEntryCount>& checks)
      : task_(task),
        subject_(subject),
        scenario_(scenario),
        depth_(depth),
        protocol_(protocol),
        checks_(checks),
        stage_({.width = 24, .height = 18, .depth = depth, .padding = 3}) {
    minihost::Instance instance = Make();
    subject.host.Reset();
    subject.host.isRecording = true;
    whole_ = stage_.Render(instance, Begin());
    calls_ = subject.host.record;
    for (std::size_t i = 0; i < kEntryCount; ++i) {
      counts_[i] = subject.host.Calls(static_cast<Entry>(i));
    }
    minihost::Instance another = Make();
    following_ = stage_.Render(another, stage_.Begin(protocol_, scenario_.time + 1));
    background_ = scenario.hasLayer ? stage_.stripes : std::vector<std::byte>(stage_.stripes.size());
    subject.host.Reset();
  }

  // Where a parameter is refused, its declared default stands in.
  void RefuseParameters(Tally::Check check) {
    const auto& definitions = subject_.Effect()->Definitions();
    const std::uint64_t count = counts_[static_cast<std::size_t>(Entry::kCheckoutParam)];
    for (std::uint64_t call = 1; call <= count; call += StepAfter(call)) {
      task_.tally.Try(check, "{}, {}, {}: parameter refused at call {}", scenario_.name, NameOf(depth_),
                      NameOf(protocol_), call);
      subject_.host.Reset();
      std::uint64_t seen = 0;
      subject_.host.onParameter = [&](std::int32_t index, std::int32_t, PF_ParamDef& def) {
        if (++seen == call) {
          def.u = definitions[static_cast<std::size_t>(index)].u;
        }
      };
      minihost::Instance honest = Make();
      const std::vector<std::byte> expected = stage_.Render(honest, Begin());
      subject_.host.Reset();
      minihost::Instance refused = Make();
      subject_.host.Tell({Entry::kCheckoutParam, call, false, Lie::kError});
      const PF_Err code = refused.Render(Begin()).err;
      subject_.host.Reset();
      task_.tally.Expect(check, code == PF_Err_NONE && stage_.output.HasPixels(expected),
                         fmt::format("not the frame with the default (code {})", code));
    }
  }

  void Go() {
    for (std::size_t i = 0; i < kEntryCount; ++i) {
      const auto entry = static_cast<Entry>(i);
      for (const Lie lie : kLies) {
        if ((InfoOf(entry).lies & Bit(lie)) == 0) {
          continue;
        }
        for (std::uint64_t call = 1; call <= counts_[i]; call += StepAfter(call)) {
          for (const bool fromThenOn : {false, true}) {
            Tell({entry, call, fromThenOn, lie});
          }
        }
      }
    }
  }

 private:
  std::uint64_t StepAfter(std::uint64_t call) const {
    return task_.effort == Effort::kQuick && call >= kEachCallTo ? 7 : 1;
  }

  minihost::Instance Make() const {
    minihost::Instance instance = subject_.Make(scenario_.numbers);
    if (!scenario_.hasRecord) {
      instance.Send(PF_Cmd_SEQUENCE_SETDOWN);
    }
    return instance;
  }

  minihost::Frame Begin() { return stage_.Begin(protocol_, scenario_.time); }

  void Tell(const Fault& fault) {
    const Tally::Check check = checks_[static_cast<std::size_t>(fault.entry)];
    task_.tally.Try(check, "{}, {}, {}: {} {} at call {}{}", scenario_.name, NameOf(depth_),
                    NameOf(protocol_), InfoOf(fault.entry).name, NameOf(fault.lie), fault.call,
                    fault.fromThenOn ? " and after" : "");
    const std::string wrong = WrongAfter(fault);
    task_.tally.Expect(check, wrong.empty(), wrong);
  }

  // What is wrong with a frame with this fault, and with the clean one after it, which continues from its
  // sums where they are right.
  std::string WrongAfter(const Fault& fault) {
    const Promise promise = PromiseOf({scenario_, depth_, calls_}, fault);
    minihost::Instance instance = Make();
    subject_.host.Reset();
    subject_.host.Tell(fault);
    subject_.host.isRecording = true;
    KeptSums sums(subject_);
    bool isLeft = false;
    subject_.host.after = [&](const CommandView& command, PF_Err err) {
      isLeft = isLeft || LeavesGeometry(command, err, promise);
      sums.See(command, subject_.host.record);
      subject_.host.record.clear();
    };
    const minihost::RenderResult result = instance.Render(Begin());
    const bool wasTold = subject_.host.Told() != 0;
    subject_.host.Reset();
    if (!wasTold) {
      return "the call did not come";
    }
    if (std::string wrong = WrongWith(promise, result); !wrong.empty()) {
      return wrong;
    }
    if (isLeft) {
      return "pre_render_data was left behind";
    }
    if (promise.isUnknowable) {
      return {};
    }
    if (std::string complaints = Complaints(instance); !complaints.empty()) {
      return complaints;
    }
    const bool follows = !sums.AreOthers();
    const minihost::RenderResult next =
        instance.Render(follows ? stage_.Begin(protocol_, scenario_.time + 1) : Begin());
    if (next.err != PF_Err_NONE || !stage_.output.HasPixels(follows ? following_ : whole_)) {
      return fmt::format("the next frame is not that of a fresh instance (code {})", next.err);
    }
    instance.Close();
    return Complaints(instance);
  }

  std::string WrongWith(const Promise& promise, const minihost::RenderResult& result) const {
    if (std::string damage = Damage(stage_); !damage.empty()) {
      return damage;
    }
    if (promise.isUnknowable) {
      return {};
    }
    if (result.err != promise.code) {
      return fmt::format("returned {} in place of {}", result.err, promise.code);
    }
    const bool wantsMessage = promise.code == 517;
    if (result.message != (wantsMessage ? "Out of memory.. (1:1)" : "")) {
      return fmt::format("its message to the user is '{}'", result.message);
    }
    return HasPromised(promise.shows) ? "" : WordsFor(promise.shows);
  }

  // After a first step that failed no second one comes, and after a second one that drew nobody wants it.
  static bool LeavesGeometry(const CommandView& command, PF_Err err, const Promise& promise) {
    if (command.number == PF_Cmd_SMART_PRE_RENDER) {
      return err != PF_Err_NONE && command.PreRender().output->pre_render_data != nullptr;
    }
    return command.number == PF_Cmd_SMART_RENDER && promise.shows != Shows::kUntouched &&
           command.SmartRender().input->pre_render_data != nullptr;
  }

  bool HasPromised(Shows shows) const {
    const auto every = [this](std::byte value) {
      return stage_.output.HasPixels(std::vector<std::byte>(whole_.size(), value));
    };
    switch (shows) {
      case Shows::kWhole:
        return stage_.output.HasPixels(whole_);
      case Shows::kUntouched:
        return every(Stage::kMarker);
      case Shows::kBackground:
        return stage_.output.HasPixels(background_);
      case Shows::kCleared:
        return every(std::byte{0});
      default:
        return true;
    }
  }

  static std::string WordsFor(Shows shows) {
    constexpr const char* kWords[] = {"the frame", "untouched", "its background", "transparent black", ""};
    return fmt::format("the output is not {}", kWords[static_cast<std::size_t>(shows)]);
  }

  const LevelTask& task_;
  Subject& subject_;
  const Scenario& scenario_;
  minihost::Depth depth_;
  minihost::Protocol protocol_;
  const std::array<Tally::Check, kEntryCount>& checks_;
  Stage stage_;
  std::vector<std::byte> whole_;
  std::vector<std::byte> following_;  // the frame after it
  std::vector<std::byte> background_;
  std::vector<HostCall> calls_;
  std::array<std::uint64_t, kEntryCount> counts_{};
};

}  // namespace

void CheckFaults(const LevelTask& task) {
  Subject subject(task.module);
  std::array<Tally::Check, kEntryCount> checks;
  for (std::size_t i = 0; i < kEntryCount; ++i) {
    checks[i] = task.tally.Begin(InfoOf(static_cast<Entry>(i)).name, kFaultUnit);
  }
  const Tally::Check defaults = task.tally.Begin("a refused parameter has its default", "frames");
  for (const Scenario& scenario : Scenarios()) {
    for (const minihost::Depth depth : kDepths) {
      for (const minihost::Protocol protocol : kProtocols) {
        Walk walk(task, subject, scenario, depth, protocol, checks);
        walk.Go();
        walk.RefuseParameters(defaults);
      }
    }
  }
  CheckCommandFaults(task, subject, checks);
}

}  // namespace cli::check
