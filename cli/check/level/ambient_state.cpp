// Level 7: the state of the thread that belongs to the host: rounding, flushing of small numbers, locale.
#include <fmt/format.h>

#include <cfenv>
#include <clocale>
#include <cstdint>
#include <optional>
#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

#include "cli/check/level.h"
#include "cli/check/scenario.h"

namespace cli::check {
namespace {

struct Setting {
  const char* name;
  int rounding;
  bool flushes;  // results and operands below the smallest normal number count as 0
};

constexpr Setting kSettings[] = {
    {"to nearest", FE_TONEAREST, false},
    {"upward", FE_UPWARD, false},
    {"downward", FE_DOWNWARD, false},
    {"toward zero", FE_TOWARDZERO, false},
    {"to nearest, flushing", FE_TONEAREST, true},
    {"toward zero, flushing", FE_TOWARDZERO, true},
};

#if defined(__x86_64__)
constexpr unsigned kFlushing = 0x8040;  // flush to zero, denormals are zero
constexpr unsigned kSticky = 0x3F;      // what has happened so far, which any operation adds to
unsigned ControlWord() {
  return _mm_getcsr() & ~kSticky;
}
void SetFlushing(bool on) {
  _mm_setcsr(on ? _mm_getcsr() | kFlushing : _mm_getcsr() & ~kFlushing);
}
#else
unsigned ControlWord() {
  return 0;
}
void SetFlushing(bool) {}
#endif

// The first locale of this machine that writes a comma for the point.
std::optional<std::string> CommaLocale() {
  for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "fr_FR.utf8", "de_DE", "fr_FR",
                           "de_AT.utf8", "nl_NL.utf8", "it_IT.utf8", "ru_RU.utf8", "sv_SE.utf8"}) {
    if (std::setlocale(LC_ALL, name) != nullptr && *std::localeconv()->decimal_point == ',') {
      return name;
    }
  }
  std::setlocale(LC_ALL, "C");
  return std::nullopt;
}

// What belongs to the host.
struct Ambience {
  int rounding = std::fegetround();
  unsigned controlWord = ControlWord();
  std::string locale = std::setlocale(LC_ALL, nullptr);
  bool operator==(const Ambience&) const = default;
};

class Surroundings {
 public:
  Surroundings(const LevelTask& task, Subject& subject, Tally::Check commands, Tally::Check pictures)
      : task_(task), subject_(subject), commands_(commands), pictures_(pictures) {}

  // Every command under this setting.
  void Try(const Setting& setting) {
    const Scenario* const scenarios = Scenarios().data();
    for (std::size_t i = 0; i < Scenarios().size(); ++i) {
      for (const minihost::Depth depth : kDepths) {
        Frame(setting, scenarios[i], depth);
      }
    }
  }

  // How many of the frames were others than in the host's usual setting.
  std::string Summary() const { return fmt::format("{} of {} frames differ", different_, frames_); }

 private:
  void Frame(const Setting& setting, const Scenario& scenario, minihost::Depth depth) {
    Stage stage({24, 18, depth, 1});
    const auto usual = [&] {
      minihost::Instance instance = subject_.Make(scenario.numbers);
      return stage.Render(instance, stage.Begin(minihost::Protocol::kSmart, scenario.time));
    };
    const std::vector<std::byte> expected = usual();
    subject_.host.before = [&](const CommandView& command) {
      task_.tally.Try(commands_, "{}, {}, {}: command {}", setting.name, scenario.name, NameOf(depth),
                      command.number);
      std::fesetround(setting.rounding);
      SetFlushing(setting.flushes);
      before_ = Ambience();
      return LyingHost::Pass::kOn;
    };
    subject_.host.after = [&](const CommandView&, PF_Err err) {
      const Ambience after;
      std::fesetround(FE_TONEAREST);
      SetFlushing(false);
      task_.tally.Expect(commands_, err == PF_Err_NONE, fmt::format("returned {}", err));
      task_.tally.Expect(commands_, after == before_, "the host's settings were changed");
    };
    for (const minihost::Protocol protocol : kProtocols) {
      minihost::Instance instance = subject_.Make(scenario.numbers);
      instance.UpdateParamsUi(minihost::UiEvent::kUpdate);
      subject_.Effect()->About();
      instance.Render(stage.Begin(protocol, scenario.time));
      ++frames_;
      different_ += stage.output.HasPixels(expected) ? 0 : 1;
      const std::string damage = Damage(stage);
      task_.tally.Expect(commands_, damage.empty(), damage);
    }
    subject_.host.Reset();
    task_.tally.Try(pictures_, "{}, {}, after {}", scenario.name, NameOf(depth), setting.name);
    task_.tally.Expect(pictures_, usual() == expected, "the usual setting's picture has changed");
  }

  const LevelTask& task_;
  Subject& subject_;
  Tally::Check commands_;
  Tally::Check pictures_;
  Ambience before_;
  int frames_ = 0;
  int different_ = 0;
};

}  // namespace

void CheckAmbientState(const LevelTask& task) {
  Subject subject(task.module);
  const Tally::Check pictures = task.tally.Begin("the usual setting's pictures", "frames");
  for (const Setting& setting : kSettings) {
    const Tally::Check commands = task.tally.Begin(fmt::format("rounding {}", setting.name), "commands");
    Surroundings surroundings(task, subject, commands, pictures);
    surroundings.Try(setting);
    task.tally.Note(commands, surroundings.Summary());
  }
  const Tally::Check commas = task.tally.Begin("a locale with commas", "commands");
  const std::optional<std::string> locale = CommaLocale();
  if (!locale) {
    task.tally.Note(commas, "this machine has no such locale");
    return;
  }
  Surroundings surroundings(task, subject, commas, pictures);
  surroundings.Try(kSettings[0]);
  task.tally.Note(commas, fmt::format("{}: {}", *locale, surroundings.Summary()));
}

}  // namespace cli::check
