// What one level has tried so far, and what came of it.
#pragma once

#include <fmt/format.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cli::check {

/// One line of the report.
struct CheckResult {
  std::string name;
  std::string unit;  // of what was tried: "frames"
  std::uint64_t tried = 0;
  std::uint64_t failed = 0;
  std::string counterexample;  // the first
  std::string note;            // what was seen and is no question of right or wrong
};

/// Where a level is, readable by another process after a crash.
struct Whereabouts {
  char check[128] = {};
  char attempt[384] = {};
  std::uint64_t tried = 0;
};

class Tally {
 public:
  /// `place` is kept up to date.  `onFinding` is called when a check fails for the first time.
  explicit Tally(
      Whereabouts& place, std::function<void(const Tally&)> onFinding = [](const Tally&) {})
      : place_(place), onFinding_(std::move(onFinding)) {}

  using Check = std::size_t;

  /// A check, tried nothing so far.
  Check Begin(std::string_view name, std::string_view unit);

  /// Counts a try, and notes where it is in case that it ends the process.
  template <class... Arguments>
  void Try(Check check, fmt::format_string<Arguments...> attempt, Arguments&&... arguments) {
    Enter(check);
    const auto end = fmt::format_to_n(place_.attempt, sizeof place_.attempt - 1, attempt,
                                      std::forward<Arguments>(arguments)...);
    *end.out = '\0';
  }

  /// The try under way fails for this reason.
  void Fail(Check check, std::string_view reason);

  /// Fails the try unless `holds`.  Returns `holds`.
  bool Expect(Check check, bool holds, std::string_view reason) {
    if (!holds) {
      Fail(check, reason);
    }
    return holds;
  }

  void Note(Check check, std::string text) { checks_[check].note = std::move(text); }

  const std::vector<CheckResult>& Checks() const { return checks_; }

 private:
  void Enter(Check check);

  Whereabouts& place_;
  std::function<void(const Tally&)> onFinding_;
  std::vector<CheckResult> checks_;
  Check last_ = ~Check{0};
};

}  // namespace cli::check
