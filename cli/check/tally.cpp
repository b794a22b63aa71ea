#include "cli/check/tally.h"

#include <algorithm>

namespace cli::check {

Tally::Check Tally::Begin(std::string_view name, std::string_view unit) {
  CheckResult& check = checks_.emplace_back();
  check.name = name;
  check.unit = unit;
  return checks_.size() - 1;
}

void Tally::Enter(Check check) {
  if (check != last_) {
    const std::string& name = checks_[check].name;
    const std::size_t length = std::min(name.size(), sizeof place_.check - 1);
    std::copy_n(name.data(), length, place_.check);
    place_.check[length] = '\0';
    last_ = check;
  }
  place_.tried = ++checks_[check].tried;
}

void Tally::Fail(Check check, std::string_view reason) {
  CheckResult& result = checks_[check];
  if (++result.failed == 1) {
    result.counterexample = fmt::format("{}: {}", place_.attempt, reason);
    onFinding_(*this);
  }
}

}  // namespace cli::check
