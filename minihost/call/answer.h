// How every function that the host lends answers the effect.
//
// A function finds its command, asks the planned faults whether to refuse, does its work, and reports what
// goes wrong as a code: no exception crosses into the effect.
#pragma once

#include <exception>
#include <new>
#include <string>
#include <utility>

#include "minihost/call/command.h"

namespace minihost {

/// Answers with what `work(Command&)` returns; without a command, and for whatever else goes wrong, with
/// PF_Err_BAD_CALLBACK_PARAM; without memory with PF_Err_OUT_OF_MEMORY.
template <class Work>
PF_Err Answer(Command* command, Work&& work) noexcept {
  try {
    return command == nullptr ? PF_Err_BAD_CALLBACK_PARAM : work(*command);
  } catch (const std::bad_alloc&) {
    return PF_Err_OUT_OF_MEMORY;
  } catch (const std::exception&) {
    return PF_Err_BAD_CALLBACK_PARAM;
  }
}

/// The same for one call of a service: counts it, and refuses it where that is planned.
template <class Work>
PF_Err Answer(Command* command, Service service, Work&& work) noexcept {
  return Answer(command, [&](Command& found) {
    const auto refusal = found.session.faults.Refuses(service);
    return refusal ? *refusal : work(found);
  });
}

/// The command, or none where the effect gave a null for what it must give.  Such a call is not counted as
/// one of its service.
template <class... Pointers>
Command* WithGiven(Command* command, const Pointers*... required) noexcept {
  return ((required != nullptr) && ...) ? command : nullptr;
}

/// Notes what the effect did against the rules.  Returns the code for it.
inline PF_Err AnswerToFault(Command& command, std::string what) {
  command.session.ledger.AddFault(std::move(what));
  return PF_Err_BAD_CALLBACK_PARAM;
}

}  // namespace minihost
