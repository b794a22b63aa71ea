// Every function by which an effect reaches its host, and how each can fail.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "hostapi/types.h"

namespace cli::check {

/// In the order of the table of names.
enum class Entry {
  kAcquireSuite,
  kReleaseSuite,
  kNewHandle,
  kLockHandle,
  kDisposeHandle,
  kNewWorld,  // of either version
  kDisposeWorld,
  kPixelFormat,
  kUpdateParamUi,
  kSample,
  kCheckoutParam,
  kCheckinParam,
  kAddParam,
  kAbort,
  kProgress,
  kFill,
  kCopy,
  kHostNewHandle,  // the callbacks, beside the suite
  kHostDisposeHandle,
  kCheckoutLayer,
  kCheckoutLayerPixels,
  kCheckoutOutput,
  kOperatorNew,  // no function of the host's, but as much out of the effect's hands
};
inline constexpr std::size_t kEntryCount = static_cast<std::size_t>(Entry::kOperatorNew) + 1;

enum class Lie {
  kError,        // answers with a code, or null where a pointer is returned, and does nothing
  kNothing,      // claims success and hands out nothing
  kNoFunctions,  // of suites: lends a table of nulls
  kThrow,        // throws the code; what was given back is taken first
  kThrowMemory,  // the same with std::bad_alloc
  kThrowOther,   // the same with something that no effect knows
};
inline constexpr Lie kLies[] = {Lie::kError, Lie::kNothing,     Lie::kNoFunctions,
                                Lie::kThrow, Lie::kThrowMemory, Lie::kThrowOther};

constexpr bool IsThrow(Lie lie) noexcept {
  return lie >= Lie::kThrow;
}

constexpr std::uint32_t Bit(Lie lie) noexcept {
  return 1u << static_cast<unsigned>(lie);
}

struct EntryInfo {
  std::string_view name;
  std::uint32_t lies;  // Bit of each that the host could tell there
};

inline constexpr std::array<EntryInfo, kEntryCount> kEntries = [] {
  constexpr std::uint32_t kThrows = Bit(Lie::kThrow) | Bit(Lie::kThrowMemory) | Bit(Lie::kThrowOther);
  constexpr std::uint32_t kStatus = Bit(Lie::kError) | kThrows;
  constexpr std::uint32_t kLending = kStatus | Bit(Lie::kNothing);
  return std::array<EntryInfo, kEntryCount>{{
      {"AcquireSuite", kLending | Bit(Lie::kNoFunctions)},
      {"ReleaseSuite", kStatus},
      {"suite's host_new_handle", kStatus},
      {"host_lock_handle", kStatus},
      {"suite's host_dispose_handle", kThrows},
      {"new_world", kLending},
      {"dispose_world", kStatus},
      {"PF_GetPixelFormat", kLending},
      {"PF_UpdateParamUI", kStatus},
      {"subpixel_sample", kLending},
      {"checkout_param", kLending},
      {"checkin_param", kStatus},
      {"add_param", kStatus},
      {"abort", kStatus},
      {"progress", kStatus},
      {"fill", kLending},
      {"copy", kLending},
      {"host_new_handle", kStatus},
      {"host_dispose_handle", kThrows},
      {"checkout_layer", kLending},
      {"checkout_layer_pixels", kLending},
      {"checkout_output", kLending},
      {"operator new", Bit(Lie::kError)},
  }};
}();

constexpr const EntryInfo& InfoOf(Entry entry) noexcept {
  return kEntries[static_cast<std::size_t>(entry)];
}

constexpr std::string_view NameOf(Lie lie) noexcept {
  constexpr std::string_view kNames[] = {"refused", "nothing handed out", "no functions",
                                         "threw",   "threw bad_alloc",    "threw something else"};
  return kNames[static_cast<std::size_t>(lie)];
}

/// Calls that the host answers otherwise than it should.
struct Fault {
  Entry entry = Entry::kAcquireSuite;
  std::uint64_t call = 1;   // counted from 1
  bool fromThenOn = false;  // that call alone, or all from it on
  Lie lie = Lie::kError;
  PF_Err code = 71;  // what is returned or thrown
};

/// What the effect makes of what is thrown at it.
constexpr PF_Err CodeOfThrow(const Fault& fault) noexcept {
  return fault.lie == Lie::kThrow         ? fault.code
         : fault.lie == Lie::kThrowMemory ? PF_Err_OUT_OF_MEMORY
                                          : PF_Err_BAD_CALLBACK_PARAM;
}

/// One call as it came.
struct HostCall {
  Entry entry;
  const void* about = nullptr;  // the suite's name, for those
  std::int32_t number = 0;      // the suite's version, the parameter's index
  bool isLie = false;           // answered otherwise than it should
};

}  // namespace cli::check
