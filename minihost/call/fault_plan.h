// Counts the calls of each service and says which of them to refuse.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "minihost/faults.h"

namespace minihost {

class FaultPlan {
 public:
  explicit FaultPlan(Faults faults);

  /// Counts one call of `service`.  A code (0 included) when it is to be refused, nothing when it goes ahead.
  std::optional<PF_Err> Refuses(Service service) noexcept;

  /// Whether any call of `service` is to be refused.  Counts nothing.
  bool Touches(Service service) const noexcept;

  /// Whether the host is to do without this suite.
  bool LacksSuite(std::string_view name, std::int32_t version) const noexcept;

  bool NoHandleCallbacks() const noexcept { return faults_.noHandleCallbacks; }
  bool NoBasicSuite() const noexcept { return faults_.noBasicSuite; }

 private:
  Faults faults_;
  std::array<std::uint64_t, kServiceCount> calls_{};
};

}  // namespace minihost
