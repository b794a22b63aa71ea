// The host's functions that come with every command.
#pragma once

#include <exception>
#include <new>

#include "hostapi/callbacks.h"
#include "hostapi/types.h"

namespace minihost {

extern const PF_InteractCallbacks kInteractCallbacks;

/// Without handle callbacks when the host is told to have none.
enum class HandleCallbacks { kOffered, kMissing };
PF_UtilCallbacks UtilCallbacks(HandleCallbacks handles) noexcept;

/// The handle callbacks, which the handle suite offers too.
PF_Handle NewHandle(std::uint64_t size) noexcept;
void DisposeHandle(PF_Handle handle) noexcept;

/// Runs a callback's work, so that what goes wrong in the host reaches the effect as a code.
template <class Work>
PF_Err Answer(Work&& work) noexcept {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return PF_Err_OUT_OF_MEMORY;
  } catch (const std::exception&) {
    return PF_Err_BAD_CALLBACK_PARAM;
  }
}

}  // namespace minihost
