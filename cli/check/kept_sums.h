// What an instance's record is worth after a host has lied.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "cli/check/instance_record.h"
#include "cli/check/subject.h"

namespace cli::check {

/// Follows an instance from command to command.  The sums in its record are others than those of a fresh one
/// at that time after a frame that counted the layer's time in other steps, and after one in which the host
/// refused Speed, Wind or Frequency, which had another value then; and so are those of the frames that
/// continue from them.  Frames that begin anew make the sums right again.
class KeptSums {
 public:
  explicit KeptSums(const Subject& subject);

  /// After each command, the calls of which the host has recorded.
  void See(const CommandView& command, std::span<const HostCall> calls);

  /// Of the last command; none after a set-down.
  const std::optional<InstanceRecord>& Record() const { return record_; }
  bool AreOthers() const { return areOthers_; }

 private:
  bool WasSumRefused(std::span<const HostCall> calls) const;

  std::array<std::int32_t, 3> summed_;  // the parameters
  std::optional<InstanceRecord> record_;
  bool areOthers_ = false;
};

}  // namespace cli::check
