// Level 10: what the effect declares, says of itself, and does to the host's interface.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>
#include <span>

#include "cli/check/level.h"

namespace cli::check {
namespace {

constexpr PF_OutFlags kFlags = PF_OutFlag_WIDE_TIME_INPUT | PF_OutFlag_NON_PARAM_VARY |
                               PF_OutFlag_USE_OUTPUT_EXTENT | PF_OutFlag_DEEP_COLOR_AWARE |
                               PF_OutFlag_SEND_UPDATE_PARAMS_UI;
constexpr PF_OutFlags2 kFlags2 = PF_OutFlag2_SUPPORTS_SMART_RENDER | PF_OutFlag2_FLOAT_COLOR_AWARE;

// Each of the host's bits stays, and the effect's are added.
void Flags(const LevelTask& task, Subject& subject) {
  const Tally::Check check = task.tally.Begin("flags beside the host's own", "set-ups");
  for (int bit = 0; bit < 32; ++bit) {
    const auto own = static_cast<std::int32_t>(1u << bit);
    task.tally.Try(check, "the host has set bit {}", bit);
    subject.host.before = [&](const CommandView& command) {
      command.out.out_flags = command.out.out_flags2 = own;
      return LyingHost::Pass::kOn;
    };
    subject.host.after = [&](const CommandView& command, PF_Err) {
      if (command.number == PF_Cmd_GLOBAL_SETUP) {
        task.tally.Expect(
            check, command.out.out_flags == (own | kFlags) && command.out.out_flags2 == (own | kFlags2),
            fmt::format("flags {:#x} and {:#x}", command.out.out_flags, command.out.out_flags2));
      }
    };
    minihost::Effect::Linked(&subject.host.Run);
    subject.host.Reset();
  }
}

// Of whatever type they are: the records begin as zeros.
bool HasSameBytes(const PF_ParamDef& a, const PF_ParamDef& b) {
  return std::ranges::equal(std::as_bytes(std::span(&a, 1)), std::as_bytes(std::span(&b, 1)));
}

void Parameters(const LevelTask& task, Subject& subject) {
  const Tally::Check check = task.tally.Begin("parameters", "parameters");
  const std::vector<PF_ParamDef>& definitions = subject.Effect()->Definitions();
  const auto again = minihost::Effect::Linked(&subject.host.Run);
  std::set<std::string> names;
  for (const minihost::ParameterInfo& parameter : subject.Effect()->Parameters()) {
    const auto slot = static_cast<std::size_t>(parameter.index);
    const PF_ParamDef& definition = definitions[slot];
    task.tally.Try(check, "parameter {}", parameter.index);
    task.tally.Expect(check, HasSameBytes(definition, again->Definitions()[slot]),
                      "another set-up declares it otherwise");
    if (parameter.index == 0) {
      continue;
    }
    task.tally.Expect(check, parameter.id == parameter.index, fmt::format("has the id {}", parameter.id));
    if (!parameter.HasValue()) {
      continue;
    }
    task.tally.Expect(check, names.insert(parameter.DisplayName()).second, "its name is another one's, too");
    const double value = definition.param_type == PF_Param_FLOAT_SLIDER
                             ? definition.u.fs_d.value - static_cast<double>(definition.u.fs_d.dephault)
                             : 0;
    task.tally.Expect(check, std::abs(value) < 1e-5, "begins with another value than its default");
  }
}

// Whatever the host's message holds, the text ends inside the record.
void AboutText(const LevelTask& task, Subject& subject) {
  const Tally::Check check = task.tally.Begin("about text", "texts");
  for (std::size_t length = 0; length <= sizeof(PF_OutData::return_msg); ++length) {
    task.tally.Try(check, "after {} characters of the host's", length);
    subject.host.before = [&](const CommandView& command) {
      std::memset(command.out.return_msg, '%', length);
      return LyingHost::Pass::kOn;
    };
    PF_OutData said{};
    subject.host.after = [&](const CommandView& command, PF_Err) { said = command.out; };
    subject.Effect()->About();
    const std::size_t end = ::strnlen(said.return_msg, sizeof said.return_msg);
    task.tally.Expect(check, end < sizeof said.return_msg, "it has no end");
    const std::string_view text(said.return_msg, end);
    task.tally.Expect(check, !text.empty() && text[0] != '%', "the effect's words are not in front");
    const auto kept = static_cast<std::size_t>(std::ranges::count(text, '%'));
    const std::size_t room = sizeof said.return_msg - 1 - (end - kept);
    task.tally.Expect(check, kept == std::min({length, room, std::size_t{255}}),
                      "the host's words are not behind");
    subject.host.Reset();
  }
}

// Nothing lies behind a layer that is not there.
void Interface(const LevelTask& task, Subject& subject) {
  const Tally::Check check = task.tally.Begin("Embed Depth % is grey without the original", "updates");
  const std::int32_t depth = subject.IndexOf("Embed Depth %");
  if (!task.tally.Expect(check, depth != 0, "there is none")) {
    return;
  }
  for (const auto event : {minihost::UiEvent::kUpdate, minihost::UiEvent::kUserChangedParameter}) {
    minihost::Instance instance = subject.Make({});
    for (const double original : {1, 0, 0, 1, 1, 0}) {
      task.tally.Try(check, "Composite With Original {}", original);
      instance.SetParameters(subject.Parameters({{"Composite With Original", original}}));
      const PF_Err err = instance.UpdateParamsUi(event).err;
      task.tally.Expect(check, err == PF_Err_NONE, fmt::format("returned {}", err));
      task.tally.Expect(check, instance.IsDisabled(depth) == (original == 0), "it is the other way");
      const std::string complaints = Complaints(instance);
      task.tally.Expect(check, complaints.empty(), complaints);
    }
  }
}

}  // namespace

void CheckDeclarations(const LevelTask& task) {
  Subject subject(task.module);
  Flags(task, subject);
  Parameters(task, subject);
  AboutText(task, subject);
  Interface(task, subject);
}

}  // namespace cli::check
