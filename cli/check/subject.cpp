#include "cli/check/subject.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <stdexcept>

#include "cli/report/error.h"

namespace cli::check {

Module OpenModule(const std::filesystem::path& file) {
  try {
    auto effect = minihost::Effect::Load(file);
    const minihost::EntryPoint entry = effect->Entry();
    return {file.string(), entry, std::move(effect)};
  } catch (const std::runtime_error& error) {
    Refuse(ExitCode::kInput, "{}", error.what());
  }
}

std::int32_t Subject::IndexOf(std::string_view name) const {
  const minihost::ParameterInfo* const found = minihost::FindParameter(effect_->Parameters(), name);
  return found != nullptr ? found->index : 0;
}

minihost::ParameterSet Subject::Parameters(const Numbers& numbers) const {
  minihost::ParameterSet set(effect_->SharedParameters());
  for (const auto& [name, number] : numbers) {
    set.Set(name, minihost::Value(number));
  }
  return set;
}

std::string Complaints(const minihost::Instance& instance) {
  const minihost::Ledger& ledger = instance.HostLedger();
  if (ledger.Outstanding() == 0 && ledger.Faults().empty()) {
    return {};
  }
  std::vector<std::string> lines = ledger.Faults();
  for (const std::string& line : ledger.Missing()) {
    lines.push_back("kept " + line);
  }
  return fmt::format("{}", fmt::join(lines, "; "));
}

}  // namespace cli::check
