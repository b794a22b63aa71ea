// The host's functions that come with every command.
#pragma once

#include "hostapi/callbacks.h"
#include "hostapi/types.h"

namespace minihost {

extern const PF_InteractCallbacks kInteractCallbacks;

/// Without handle callbacks when the host is told to have none.
enum class HandleCallbacks { kOffered, kMissing };
PF_UtilCallbacks UtilCallbacks(HandleCallbacks handles) noexcept;

/// The handle callbacks, which the handle suite offers too.  `size` is in bytes.  Null without memory,
/// without a command and where the call is to be refused.
PF_Handle NewHandle(std::uint64_t size) noexcept;
/// A fault in the ledger for what is no live handle.
void DisposeHandle(PF_Handle handle) noexcept;

}  // namespace minihost
