#include "minihost/call/callbacks.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "minihost/call/answer.h"
#include "minihost/call/checkout.h"
#include "minihost/call/trigonometry.h"
#include "minihost/picture/copy.h"

namespace minihost {
namespace {

using Function = double (*)(double);
#if defined(__GLIBC__)
constexpr Function kCosine = std::cos;
constexpr Function kTangent = std::tan;
#else
constexpr Function kCosine = Cosine;
constexpr Function kTangent = Tangent;
#endif

PF_Err CheckoutParam(PF_ProgPtr effect_ref, std::int32_t index, std::int32_t what_time, std::int32_t,
                     std::uint32_t time_scale, PF_ParamDef* def) noexcept {
  return Answer(Command::Named(effect_ref), Service::kCheckoutParam, [&](Command& command) {
    Session& session = command.session;
    if (def == nullptr || command.scene.parameters == nullptr || index < 0 ||
        index >= std::ssize(session.definitions)) {
      return AnswerToFault(command,
                           "checked out parameter " + std::to_string(index) + ", which is not there");
    }
    const double frame = LayerFrameAt(command.scene, what_time, time_scale);
    *def = DefinitionAt(session, command.scene, index, frame);
    session.ledger.Lend(Ledger::Kind::kParameter, def, nullptr, index);
    return PF_Err_NONE;
  });
}

PF_Err CheckinParam(PF_ProgPtr effect_ref, PF_ParamDef* def) noexcept {
  return Answer(Command::Named(effect_ref), [&](Command& command) {
    const int id = def == nullptr ? 0 : def->uu.id;
    const bool known = command.session.ledger.Return(Ledger::Kind::kParameter, def, "id", id);
    return known ? PF_Err_NONE : PF_Err_BAD_CALLBACK_PARAM;
  });
}

PF_Err AddParam(PF_ProgPtr effect_ref, std::int32_t index, PF_ParamDef* def) noexcept {
  return Answer(Command::Named(effect_ref), Service::kAddParam, [&](Command& command) {
    std::vector<PF_ParamDef>* declarations = command.scene.declarations;
    if (def == nullptr || declarations == nullptr || index < -1 || index == 0 ||
        index > std::ssize(*declarations)) {
      return AnswerToFault(command,
                           "declared a parameter at " + std::to_string(index) + ", where none can be");
    }
    declarations->insert(index == -1 ? declarations->end() : declarations->begin() + index, *def);
    return PF_Err_NONE;
  });
}

// A hook's answer as the effect sees it.  What a hook throws waits until the effect has returned.
template <class Hook, class... Arguments>
PF_Err Ask(PF_ProgPtr effect_ref, Hook RenderHooks::*hook, Arguments... arguments) noexcept {
  return Answer(Command::Named(effect_ref), [&](Command& command) {
    if (command.hookFailure) {
      return kRenderStopped;
    }
    const RenderHooks* hooks = command.scene.hooks;
    if (hooks == nullptr || !(hooks->*hook)) {
      return PF_Err_NONE;
    }
    try {
      return (hooks->*hook)(arguments...) == Verdict::kContinue ? PF_Err_NONE : kRenderStopped;
    } catch (...) {
      command.hookFailure = std::current_exception();
      return kRenderStopped;
    }
  });
}

PF_Err Abort(PF_ProgPtr effect_ref) noexcept {
  return Ask(effect_ref, &RenderHooks::abort);
}

PF_Err Progress(PF_ProgPtr effect_ref, std::int32_t current, std::int32_t total) noexcept {
  return Ask(effect_ref, &RenderHooks::progress, current, total);
}

PF_Err Fill(PF_ProgPtr effect_ref, const PF_Pixel* color, const PF_LRect* rect,
            PF_EffectWorld* world) noexcept {
  return Answer(Command::Named(effect_ref), Service::kFill, [&](Command& command) {
    const auto depth = world == nullptr ? std::nullopt : command.session.worlds.DepthOf(*world);
    if (!depth) {
      return AnswerToFault(command, "filled a world that this host did not make");
    }
    FillPixels(color == nullptr ? PF_Pixel{} : *color, rect == nullptr ? BoundsOf(*world) : *rect, *world,
               *depth);
    return PF_Err_NONE;
  });
}

PF_Err Copy(PF_ProgPtr effect_ref, PF_EffectWorld* src, PF_EffectWorld* dst, const PF_LRect* src_rect,
            const PF_LRect* dst_rect) noexcept {
  return Answer(Command::Named(effect_ref), Service::kCopy, [&](Command& command) {
    const WorldTable& worlds = command.session.worlds;
    const auto from = src == nullptr ? std::nullopt : worlds.DepthOf(*src);
    const auto to = dst == nullptr ? std::nullopt : worlds.DepthOf(*dst);
    if (!from || !to) {
      return AnswerToFault(command, "copied a world that this host did not make");
    }
    if (*from != *to) {
      return AnswerToFault(command, "copied between worlds of different depths");
    }
    CopyPixels(*src, src_rect == nullptr ? BoundsOf(*src) : *src_rect, *dst,
               dst_rect == nullptr ? BoundsOf(*dst) : *dst_rect, *to);
    return PF_Err_NONE;
  });
}

}  // namespace

const PF_InteractCallbacks kInteractCallbacks{CheckoutParam, CheckinParam, AddParam, Abort, Progress};

PF_Handle NewHandle(std::uint64_t size) noexcept {
  PF_Handle handle = nullptr;
  Answer(Command::Current(), Service::kNewHandle, [&](Command& command) {
    Session& session = command.session;
    const PF_Handle made = session.handles.New(size);
    if (made == nullptr) {
      return PF_Err_OUT_OF_MEMORY;
    }
    try {
      session.ledger.Lend(Ledger::Kind::kHandle, made, "bytes", static_cast<std::int64_t>(size));
    } catch (...) {
      session.handles.Dispose(made);
      throw;
    }
    handle = made;
    return PF_Err_NONE;
  });
  return handle;
}

void DisposeHandle(PF_Handle handle) noexcept {
  Answer(Command::Current(), [&](Command& command) {
    command.session.ledger.Return(Ledger::Kind::kHandle, handle, nullptr, 0);
    command.session.handles.Dispose(handle);
    return PF_Err_NONE;
  });
}

PF_UtilCallbacks UtilCallbacks(HandleCallbacks handles) noexcept {
  PF_UtilCallbacks callbacks{};
  callbacks.ansi = {kCosine, std::sqrt, kTangent, std::sprintf, std::strcpy};
  callbacks.fill = Fill;
  callbacks.copy = Copy;
  if (handles == HandleCallbacks::kOffered) {
    callbacks.host_new_handle = NewHandle;
    callbacks.host_dispose_handle = DisposeHandle;
  }
  return callbacks;
}

}  // namespace minihost
