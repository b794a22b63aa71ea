// Level 6: interrupted at every question, a frame holds the flakes drawn so far, and those exactly.
#include <fmt/format.h>

#include <algorithm>

#include "cli/check/level.h"
#include "cli/check/scenario.h"

namespace cli::check {
namespace {

constexpr int kFlakes = 1100;  // nine reports

Subject::Numbers WithFlakes(const Scenario& scenario, double flakes) {
  Subject::Numbers look = scenario.numbers;
  look.emplace_back("Flakes", flakes);  // the later one counts
  return look;
}

// After the answer that ends it, a frame gives back what it has and asks for nothing.
bool OnlyGivesBack(std::span<const HostCall> calls) {
  return std::ranges::all_of(calls, [](const HostCall& call) {
    return call.entry == Entry::kReleaseSuite || call.entry == Entry::kDisposeWorld ||
           call.entry == Entry::kDisposeHandle;
  });
}

struct Checks {
  Tally::Check abort;
  Tally::Check progress;
};

struct Way {
  const Scenario& scenario;
  minihost::Depth depth;
  minihost::Protocol protocol;
  LyingHost::Root root;
};

class Interruptions {
 public:
  Interruptions(const LevelTask& task, Subject& subject, const Way& way, const Checks& checks)
      : task_(task),
        subject_(subject),
        way_(way),
        checks_(checks),
        stage_({.width = 24, .height = 18, .depth = way.depth, .padding = 1}),
        name_(fmt::format("{}, {}, {}{}", way.scenario.name, NameOf(way.depth), NameOf(way.protocol),
                          way.root == LyingHost::Root::kRight ? "" : ", plain loop")) {}

  void Abort() {
    task_.tally.Try(checks_.abort, "{}: aborted", name_);
    const auto background =
        way_.scenario.hasLayer ? stage_.stripes : std::vector<std::byte>(stage_.stripes.size());
    Interrupt(checks_.abort, {Entry::kAbort, 1, true, Lie::kError});
    task_.tally.Expect(checks_.abort, stage_.output.HasPixels(background), "not the background");
  }

  void Progress() {
    minihost::Instance instance = Make(kFlakes);
    subject_.host.isRecording = true;
    stage_.Render(instance, Begin());
    std::vector<std::int32_t> reports;
    for (const HostCall& call : subject_.host.record) {
      if (call.entry == Entry::kProgress) {
        reports.push_back(call.number);
      }
    }
    for (std::size_t i = 0; i < reports.size(); ++i) {
      task_.tally.Try(checks_.progress, "{}: interrupted at flake {}", name_, reports[i]);
      minihost::Instance fewer = Make(reports[i] + 1);
      const std::vector<std::byte> drawn = stage_.Render(fewer, Begin());
      Interrupt(checks_.progress, {Entry::kProgress, i + 1, true, Lie::kError});
      task_.tally.Expect(checks_.progress, stage_.output.HasPixels(drawn),
                         "not the flakes up to the interruption");
    }
  }

 private:
  minihost::Instance Make(double flakes) {
    minihost::Instance instance = subject_.Make(WithFlakes(way_.scenario, flakes));
    subject_.host.Reset();
    subject_.host.root = way_.root;
    return instance;
  }

  minihost::Frame Begin() { return stage_.Begin(way_.protocol, way_.scenario.time); }

  void Interrupt(Tally::Check check, const Fault& fault) {
    minihost::Instance instance = Make(kFlakes);
    subject_.host.Tell(fault);
    subject_.host.isRecording = true;
    const PF_Err code = instance.Render(Begin()).err;
    const std::vector<HostCall>& calls = subject_.host.record;
    const auto last = std::ranges::find_if(calls.rbegin(), calls.rend(),
                                           [&](const HostCall& call) { return call.entry == fault.entry; });
    const auto after = static_cast<std::size_t>(last - calls.rbegin());
    const bool endedAtOnce = subject_.host.Told() == 1 && OnlyGivesBack(std::span(calls).last(after));
    task_.tally.Expect(check, code == fault.code, fmt::format("returned {}", code));
    task_.tally.Expect(check, endedAtOnce, "it went on");
    const std::string damage = Damage(stage_);
    task_.tally.Expect(check, damage.empty(), damage);
    const std::string complaints = Complaints(instance);
    task_.tally.Expect(check, complaints.empty(), complaints);
    subject_.host.Reset();
  }

  const LevelTask& task_;
  Subject& subject_;
  Way way_;
  Checks checks_;
  Stage stage_;
  std::string name_;
};

}  // namespace

void CheckInterruption(const LevelTask& task) {
  Subject subject(task.module);
  const Checks checks{task.tally.Begin("abort", "interruptions"),
                      task.tally.Begin("progress", "interruptions")};
  for (const Scenario& scenario : Scenarios()) {
    for (const minihost::Depth depth : kDepths) {
      for (const minihost::Protocol protocol : kProtocols) {
        for (const auto root : {LyingHost::Root::kRight, LyingHost::Root::kDoubtful}) {
          Interruptions interruptions(task, subject, {scenario, depth, protocol, root}, checks);
          interruptions.Abort();
          interruptions.Progress();
        }
      }
    }
  }
}

}  // namespace cli::check
