#include "cli/check/level/command_faults.h"

#include <fmt/format.h>

#include "cli/check/scenario.h"

namespace cli::check {
namespace {

// The code that a set-up ends with, 0 when it succeeds.
template <class SetUp>
PF_Err CodeOf(SetUp setUp) {
  try {
    setUp();
    return PF_Err_NONE;
  } catch (const minihost::EffectError& error) {
    return error.Code();
  }
}

class CommandFaults {
 public:
  CommandFaults(const LevelTask& task, Subject& subject, const std::array<Tally::Check, kEntryCount>& checks)
      : task_(task), subject_(subject), checks_(checks) {}

  void SetUps() {
    const std::size_t count = subject_.Effect()->Parameters().size() - 1;
    for (const Lie lie : {Lie::kError, Lie::kThrow, Lie::kThrowMemory, Lie::kThrowOther}) {
      const PF_Err thrown = CodeOfThrow({.lie = lie});
      for (std::uint64_t call = 1; call <= count; ++call) {
        const auto setUp = [this] { minihost::Effect::Linked(&subject_.host.Run); };
        Expect({Entry::kAddParam, call, false, lie}, "parameter set-up", lie == Lie::kError ? 71 : thrown,
               [&] { return CodeOf(setUp); });
      }
      const auto setUp = [this] { subject_.Make({}); };
      Expect({Entry::kHostNewHandle, 1, false, lie}, "sequence set-up", lie == Lie::kError ? 517 : thrown,
             [&] { return CodeOf(setUp); });
    }
  }

  void SetDown() {
    minihost::Instance instance = subject_.Make({});
    Expect({Entry::kHostDisposeHandle, 1, false, Lie::kThrow}, "sequence set-down", 71,
           [&] { return instance.Close().err; });
    const std::string complaints = Complaints(instance);
    task_.tally.Expect(CheckOf(Entry::kHostDisposeHandle), complaints.empty(), complaints);
  }

  void Interface() {
    const struct {
      Entry entry;
      Lie lie;
      PF_Err code;
    } rows[] = {
        {Entry::kAcquireSuite, Lie::kError, 516},       {Entry::kAcquireSuite, Lie::kNothing, 516},
        {Entry::kAcquireSuite, Lie::kNoFunctions, 516}, {Entry::kAcquireSuite, Lie::kThrow, 71},
        {Entry::kUpdateParamUi, Lie::kError, 71},       {Entry::kUpdateParamUi, Lie::kThrow, 71},
        {Entry::kReleaseSuite, Lie::kError, 0},         {Entry::kReleaseSuite, Lie::kThrow, 0},
        {Entry::kAcquireSuite, Lie::kThrowMemory, 4},   {Entry::kUpdateParamUi, Lie::kThrowOther, 516},
    };
    for (const auto& [entry, lie, code] : rows) {
      for (const auto event : {minihost::UiEvent::kUpdate, minihost::UiEvent::kUserChangedParameter}) {
        minihost::Instance instance = subject_.Make({});
        Expect({entry, 1, false, lie}, "interface update", code,
               [&] { return instance.UpdateParamsUi(event).err; });
        const std::string complaints = Complaints(instance);
        task_.tally.Expect(CheckOf(entry), complaints.empty(), complaints);
      }
    }
  }

  // A host that has no basic suite at all.
  void NoSuites() {
    minihost::Faults faults;
    faults.noBasicSuite = true;
    minihost::Instance instance = subject_.Make({});
    instance.SetFaults(faults);
    Stage stage({.width = 8, .height = 8});
    for (const minihost::Protocol protocol : kProtocols) {
      task_.tally.Try(CheckOf(Entry::kAcquireSuite), "no basic suite, {}", NameOf(protocol));
      ExpectCode(Entry::kAcquireSuite, instance.Render(stage.Begin(protocol, 0)).err, 516);
    }
  }

  // Of the handle callbacks a host may lack one or both: the record is made and disposed of by one party.
  void PartsOfTheHandleCallbacks() {
    using Handles = LyingHost::Handles;
    Stage stage({.width = 8, .height = 8});
    for (const Handles handles : {Handles::kNone, Handles::kOnlyNew, Handles::kOnlyDispose}) {
      const Tally::Check check = CheckOf(Entry::kHostNewHandle);
      task_.tally.Try(check, "handle callbacks {} of none, new alone, dispose alone",
                      static_cast<int>(handles));
      subject_.host.handles = handles;
      minihost::Instance instance = subject_.Make({{"Flakes", 20}});
      ExpectCode(Entry::kHostNewHandle, instance.Render(stage.Begin(minihost::Protocol::kSmart, 1)).err, 0);
      ExpectCode(Entry::kHostNewHandle, instance.Close().err, 0);
      const std::string complaints = Complaints(instance);
      task_.tally.Expect(check, complaints.empty(), complaints);
      subject_.host.Reset();
    }
  }

 private:
  Tally::Check CheckOf(Entry entry) const { return checks_[static_cast<std::size_t>(entry)]; }

  void ExpectCode(Entry entry, PF_Err code, PF_Err promised) {
    task_.tally.Expect(CheckOf(entry), code == promised,
                       fmt::format("returned {} in place of {}", code, promised));
  }

  template <class Command>
  void Expect(const Fault& fault, std::string_view what, PF_Err promised, Command command) {
    task_.tally.Try(CheckOf(fault.entry), "{}: {} {} at call {}", what, InfoOf(fault.entry).name,
                    NameOf(fault.lie), fault.call);
    subject_.host.Reset();
    subject_.host.Tell(fault);
    const PF_Err code = command();
    const bool wasTold = subject_.host.Told() != 0;
    subject_.host.Reset();
    if (task_.tally.Expect(CheckOf(fault.entry), wasTold, "the call did not come")) {
      ExpectCode(fault.entry, code, promised);
    }
  }

  const LevelTask& task_;
  Subject& subject_;
  const std::array<Tally::Check, kEntryCount>& checks_;
};

}  // namespace

void CheckCommandFaults(const LevelTask& task, Subject& subject,
                        const std::array<Tally::Check, kEntryCount>& checks) {
  subject.host.Reset();
  CommandFaults faults(task, subject, checks);
  faults.SetUps();
  faults.SetDown();
  faults.Interface();
  faults.NoSuites();
  faults.PartsOfTheHandleCallbacks();
}

}  // namespace cli::check
