// The bytes that an instance keeps between frames, as its host sees them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "hostapi/commands.h"

namespace cli::check {

inline constexpr std::size_t kRecordBytes = 28;
using InstanceRecord = std::array<std::byte, kRecordBytes>;

/// Of a handle that is not null.
inline InstanceRecord ReadRecord(PF_Handle handle) {
  InstanceRecord record;
  std::memcpy(record.data(), *handle, record.size());
  return record;
}
inline void WriteRecord(PF_Handle handle, const InstanceRecord& record) {
  std::memcpy(*handle, record.data(), record.size());
}

/// The time of the frame that left it, which the sums after it belong to.
inline std::int32_t TimeOf(const InstanceRecord& record) {
  std::int32_t time = 0;
  std::memcpy(&time, record.data(), sizeof time);
  return time;
}

}  // namespace cli::check
