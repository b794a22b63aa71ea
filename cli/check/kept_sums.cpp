#include "cli/check/kept_sums.h"

#include <algorithm>

namespace cli::check {

KeptSums::KeptSums(const Subject& subject)
    : summed_{subject.IndexOf("Speed"), subject.IndexOf("Wind"), subject.IndexOf("Frequency")} {}

void KeptSums::See(const CommandView& command, std::span<const HostCall> calls) {
  const std::optional<InstanceRecord> before = record_;
  const PF_Handle handle = command.out.sequence_data;
  record_ = handle == nullptr ? std::nullopt : std::optional(ReadRecord(handle));
  if (!record_) {
    areOthers_ = false;
  } else if (record_ != before) {
    const std::int32_t step = command.in.local_time_step;
    const bool continues = before && TimeOf(*before) == command.in.current_time - step;
    areOthers_ = (continues && areOthers_) || step != 1 || WasSumRefused(calls);
  }
}

// Before the sums are kept the host is asked whether to go on; what is read afterwards is not in them.
bool KeptSums::WasSumRefused(std::span<const HostCall> calls) const {
  const auto question = std::ranges::find(calls.rbegin(), calls.rend(), Entry::kAbort, &HostCall::entry);
  return std::any_of(question, calls.rend(), [this](const HostCall& call) {
    return call.isLie && call.entry == Entry::kCheckoutParam &&
           std::ranges::find(summed_, call.number) != summed_.end();
  });
}

}  // namespace cli::check
