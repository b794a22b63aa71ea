// How each function of the tables answers: by the host's own, or by the lie that is due.
#pragma once

#include <array>
#include <cstdint>
#include <new>
#include <optional>
#include <type_traits>

#include "cli/check/host/allocation.h"
#include "cli/check/host/lying_host.h"

namespace cli::check {

/// What is told, and what has been called so far.
struct Plan {
  std::optional<Fault> fault;
  std::uint64_t told = 0;
  std::array<std::uint64_t, kEntryCount> calls{};
};

/// The host of the command on its way, and its plan.
struct Telling {
  LyingHost* host = nullptr;
  Plan plan;
};
Telling& CurrentTelling() noexcept;

/// Counts a call of an entry.  The fault whose turn it is, or null.
inline const Fault* DueFault(Plan& plan, Entry entry) {
  const std::uint64_t number = ++plan.calls[static_cast<std::size_t>(entry)];
  if (!plan.fault || plan.fault->entry != entry) {
    return nullptr;
  }
  const Fault& fault = *plan.fault;
  if (number != fault.call && !(fault.fromThenOn && number > fault.call)) {
    return nullptr;
  }
  ++plan.told;
  return &fault;
}

/// Counts a call, and notes it where that is wanted.  The fault whose turn it is, or null.
inline const Fault* NextLie(const HostCall& call) {
  Telling& telling = CurrentTelling();
  const Fault* const lie = DueFault(telling.plan, call.entry);
  if (telling.host->isRecording) {
    telling.host->record.push_back(call);
    telling.host->record.back().isLie = lie != nullptr;
  }
  return lie;
}

[[noreturn]] inline void Throw(const Fault& lie) {
  if (lie.lie == Lie::kThrowMemory) {
    throw std::bad_alloc();
  }
  if (lie.lie == Lie::kThrowOther) {
    throw "a host's own affair";
  }
  throw PF_Err{lie.code};
}

/// A function that returns a status.  `nothing` claims success.
template <class Forward, class Nothing>
PF_Err Answer(const HostCall& call, Forward forward, Nothing nothing) {
  const HostSide side;
  const Fault* const lie = NextLie(call);
  if (lie == nullptr) {
    return forward();
  }
  if (IsThrow(lie->lie)) {
    Throw(*lie);
  }
  if (lie->lie == Lie::kError) {
    return lie->code;
  }
  nothing();
  return PF_Err_NONE;
}

template <class Forward>
PF_Err Answer(const HostCall& call, Forward forward) {
  return Answer(call, forward, [] {});
}

/// A function by which the effect gives something back: it arrives whatever is answered.
template <class Forward>
auto AnswerReturn(const HostCall& call, Forward forward) {
  const HostSide side;
  const Fault* const lie = NextLie(call);
  if constexpr (std::is_void_v<decltype(forward())>) {
    forward();
    if (lie != nullptr) {
      Throw(*lie);
    }
  } else {
    const PF_Err err = forward();
    if (lie != nullptr && IsThrow(lie->lie)) {
      Throw(*lie);
    }
    return lie != nullptr ? lie->code : err;
  }
}

/// A function that returns a pointer: null in place of a code.
template <class Forward>
auto AnswerPointer(const HostCall& call, Forward forward) -> decltype(forward()) {
  const HostSide side;
  const Fault* const lie = NextLie(call);
  if (lie == nullptr) {
    return forward();
  }
  if (IsThrow(lie->lie)) {
    Throw(*lie);
  }
  return nullptr;
}

}  // namespace cli::check
