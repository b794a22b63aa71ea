// A run of commands on one instance, with faults of its host between them: afterwards everything lent is
// back, nothing was written beside the pixels, and the next frames are those of a fresh instance.
#include <cmath>
#include <optional>
#include <stdexcept>

#include "cli/check/kept_sums.h"
#include "cli/check/scenario.h"
#include "cli/check/subject.h"
#include "fuzz/input.h"

namespace {

using cli::check::InstanceRecord;
using cli::check::Stage;
using cli::check::Subject;
using cli::check::TimeOf;

// Parameters of any number in their valid range, of few flakes.
minihost::ParameterSet TakeLook(fuzz::Input& input, const Subject& subject) {
  minihost::ParameterSet set = subject.Parameters({{"Size", 6}, {"Scene Depth", 300}});
  for (int changes = input.Between(0, 6); changes > 0; --changes) {
    const minihost::ParameterList& list = set.List();
    const auto& parameter = list[input.Take<std::uint8_t>() % list.size()];
    const double share = input.Take<std::uint16_t>() / 65535.0;
    double value = parameter.validMin + share * (parameter.validMax - parameter.validMin);
    value = parameter.type == PF_Param_FLOAT_SLIDER ? value : std::round(value);
    if (parameter.HasValue() && std::holds_alternative<double>(*parameter.defaultValue)) {
      set.Set(parameter.index, minihost::Value(value));
    }
  }
  set.Set("Flakes", minihost::Value(static_cast<double>(input.Between(0, 250))));
  return set;
}

minihost::Frame TakeFrame(fuzz::Input& input, Stage& stage) {
  minihost::Frame frame = stage.Begin(input.Of(cli::check::kProtocols), input.Between(0, 40));
  frame.timing.shutterDegrees = input.Between(0, 255) * 3.0;
  frame.timing.localTimeStep = input.Of<std::int32_t>({1, 1, 1, 2, -1, 0});
  const std::uint32_t divisor = input.Of<std::uint32_t>({1, 1, 2, 3});
  frame.downsampleX.den = frame.downsampleY.den = divisor;
  return frame;
}

cli::check::Fault TakeFault(fuzz::Input& input) {
  using namespace cli::check;
  Fault fault;
  fault.entry = static_cast<Entry>(input.Between(0, static_cast<int>(kEntryCount) - 1));
  fault.call = static_cast<std::uint64_t>(input.Between(1, 60));
  fault.fromThenOn = input.Between(0, 1) == 1;
  do {
    fault.lie = input.Of(kLies);
  } while ((InfoOf(fault.entry).lies & Bit(fault.lie)) == 0 && !input.IsEmpty());
  if ((InfoOf(fault.entry).lies & Bit(fault.lie)) == 0) {
    fault = {};
  }
  return fault;
}

void DoOne(fuzz::Input& input, Subject& subject, Stage& stage, minihost::Instance& instance) {
  constexpr PF_Cmd kPlain[] = {PF_Cmd_SEQUENCE_SETUP, PF_Cmd_SEQUENCE_RESETUP, PF_Cmd_SEQUENCE_SETDOWN,
                               PF_Cmd_SEQUENCE_FLATTEN};
  switch (input.Between(0, 7)) {
    case 0:
      instance.Send(input.Of(kPlain));
      break;
    case 1:
      instance.Send(input.Take<PF_Cmd>() | 0x10000);  // none that means anything
      break;
    case 2:
      instance.UpdateParamsUi(minihost::UiEvent::kUpdate);
      break;
    case 3:
    case 4:
      subject.host.Tell(TakeFault(input));
      break;
    default:
      instance.Render(TakeFrame(input, stage));
      break;
  }
}

// With `record`, if any, in place of what its set-up left.
std::vector<std::byte> RenderFresh(Subject& subject, const minihost::ParameterSet& look, Stage& stage,
                                   std::int32_t time, const std::optional<InstanceRecord>& record) {
  minihost::Instance fresh(subject.Effect(), look);
  subject.host.before = [&](const cli::check::CommandView& command) {
    if (record && command.number == PF_Cmd_SMART_PRE_RENDER) {
      cli::check::WriteRecord(command.out.sequence_data, *record);
    }
    return cli::check::LyingHost::Pass::kOn;
  };
  std::vector<std::byte> pixels = stage.Render(fresh, stage.Begin(minihost::Protocol::kSmart, time));
  subject.host.before = nullptr;
  return pixels;
}

void RunCommands(fuzz::Input& input) {
  static Subject subject({"linked", &MainEntry});
  const cli::check::Layout layout{input.Between(1, 40), input.Between(1, 30), input.Of(cli::check::kDepths),
                                  input.Between(0, 4)};
  Stage stage(layout);
  subject.host.Reset();
  const minihost::ParameterSet look = TakeLook(input, subject);
  cli::check::KeptSums sums(subject);
  subject.host.isRecording = true;
  subject.host.after = [&](const cli::check::CommandView& command, PF_Err) {
    sums.See(command, subject.host.record);
    subject.host.record.clear();
  };
  minihost::Instance instance(subject.Effect(), look);
  for (int steps = 0; steps < 24 && !input.IsEmpty(); ++steps) {
    try {
      DoOne(input, subject, stage, instance);
    } catch (const std::invalid_argument&) {  // what the host does not send
    }
    const std::string damage = Damage(stage);
    fuzz::Require(damage.empty(), damage);
  }
  subject.host.Reset();

  const std::int32_t next = sums.Record() ? TimeOf(*sums.Record()) + 1 : 5;
  const auto given = sums.AreOthers() ? sums.Record() : std::nullopt;
  const auto renderSame = [&](std::int32_t time) {
    return stage.Render(instance, stage.Begin(minihost::Protocol::kSmart, time));
  };
  fuzz::Require(renderSame(next) == RenderFresh(subject, look, stage, next, given),
                "the next frame, which continues, is that of a fresh instance with as much of the record");
  const std::int32_t later = next + 2;
  fuzz::Require(renderSame(later) == RenderFresh(subject, look, stage, later, {}),
                "a frame that begins anew is that of a fresh instance");
  instance.Close();
  // A host that lies about a depth brings about calls against its rules; what it lent comes back all the
  // same.
  fuzz::Require(instance.HostLedger().Outstanding() == 0, "all that was lent is back");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  fuzz::Input input(bytes, size);
  RunCommands(input);
  return 0;
}
