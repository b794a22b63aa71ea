#include "minihost/call/fault_plan.h"

#include <algorithm>
#include <utility>

namespace minihost {

FaultPlan::FaultPlan(Faults faults) : faults_(std::move(faults)) {}

std::optional<PF_Err> FaultPlan::Refuses(Service service) noexcept {
  if (faults_.refusals.empty()) {
    return std::nullopt;
  }
  const std::uint64_t call = ++calls_[static_cast<std::size_t>(service)];
  for (const Refusal& refusal : faults_.refusals) {
    if (refusal.service == service && (refusal.call == Refusal::kEveryCall || refusal.call == call)) {
      return refusal.err;
    }
  }
  return std::nullopt;
}

bool FaultPlan::Touches(Service service) const noexcept {
  return std::any_of(faults_.refusals.begin(), faults_.refusals.end(),
                     [service](const Refusal& refusal) { return refusal.service == service; });
}

bool FaultPlan::LacksSuite(std::string_view name, std::int32_t version) const noexcept {
  return std::any_of(
      faults_.missingSuites.begin(), faults_.missingSuites.end(),
      [=](const MissingSuite& suite) { return suite.name == name && suite.version == version; });
}

}  // namespace minihost
