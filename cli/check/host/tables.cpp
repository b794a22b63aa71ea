#include "cli/check/host/tables.h"

#include <cstring>

#include "cli/check/host/answer.h"
#include "cli/check/host/suites.h"

namespace cli::check {
namespace {

// The host's own functions, of the command on its way.  Commands do not nest here.
struct Theirs {
  PF_InteractCallbacks inter;
  PF_UtilCallbacks utils;
  PF_PreRenderCallbacks preRender;
  PF_SmartRenderCallbacks smartRender;
} theirs;

Telling telling;

// What the effect has given back is worth nothing to it any more.
void Spoil(PF_ParamDef& def) {
  std::memset(static_cast<void*>(&def), 0xA5, sizeof def);
}

PF_Err CheckoutParam(PF_ProgPtr ref, std::int32_t index, std::int32_t time, std::int32_t step,
                     std::uint32_t scale, PF_ParamDef* def) {
  const auto forward = [&] {
    const PF_Err err = theirs.inter.checkout_param(ref, index, time, step, scale, def);
    if (err == PF_Err_NONE && def != nullptr && telling.host->onParameter) {
      telling.host->onParameter(index, time, *def);
    }
    return err;
  };
  // Lent, so that it comes back, and empty.
  return Answer({Entry::kCheckoutParam, nullptr, index}, forward, [&] {
    forward();
    *def = {};
  });
}

PF_Err CheckinParam(PF_ProgPtr ref, PF_ParamDef* def) {
  const HostCall call{Entry::kCheckinParam, nullptr, def == nullptr ? 0 : def->uu.id};
  return AnswerReturn(call, [&] {
    const PF_Err err = theirs.inter.checkin_param(ref, def);
    if (err == PF_Err_NONE && def != nullptr) {
      Spoil(*def);
    }
    return err;
  });
}

PF_Err AddParam(PF_ProgPtr ref, std::int32_t index, PF_ParamDef* def) {
  return Answer({Entry::kAddParam}, [&] { return theirs.inter.add_param(ref, index, def); });
}

PF_Err Abort(PF_ProgPtr ref) {
  return Answer({Entry::kAbort}, [&] { return theirs.inter.abort(ref); });
}

PF_Err Progress(PF_ProgPtr ref, std::int32_t current, std::int32_t total) {
  return Answer({Entry::kProgress, nullptr, current},
                [&] { return theirs.inter.progress(ref, current, total); });
}

PF_Err Fill(PF_ProgPtr ref, const PF_Pixel* color, const PF_LRect* rect, PF_EffectWorld* world) {
  return Answer({Entry::kFill}, [&] { return theirs.utils.fill(ref, color, rect, world); });
}

PF_Err Copy(PF_ProgPtr ref, PF_EffectWorld* src, PF_EffectWorld* dst, const PF_LRect* srcRect,
            const PF_LRect* dstRect) {
  return Answer({Entry::kCopy}, [&] { return theirs.utils.copy(ref, src, dst, srcRect, dstRect); });
}

PF_Handle HostNewHandle(std::uint64_t size) {
  return AnswerPointer({Entry::kHostNewHandle}, [&] { return theirs.utils.host_new_handle(size); });
}

void HostDisposeHandle(PF_Handle handle) {
  AnswerReturn({Entry::kHostDisposeHandle}, [&] { theirs.utils.host_dispose_handle(handle); });
}

PF_Err CheckoutLayer(PF_ProgPtr ref, std::int32_t index, std::int32_t id, const PF_RenderRequest* request,
                     std::int32_t time, std::int32_t step, std::uint32_t scale, PF_CheckoutResult* result) {
  const auto forward = [&] {
    const PF_Err err = theirs.preRender.checkout_layer(ref, index, id, request, time, step, scale, result);
    if (err == PF_Err_NONE && telling.host->onLayer) {
      telling.host->onLayer(*result);
    }
    return err;
  };
  // A layer that is promised and has no pixels.
  return Answer({Entry::kCheckoutLayer, nullptr, index}, forward, [&] {
    forward();
    *result = {};
  });
}

PF_Err CheckoutLayerPixels(PF_ProgPtr ref, std::int32_t id, PF_EffectWorld** world) {
  return Answer(
      {Entry::kCheckoutLayerPixels}, [&] { return theirs.smartRender.checkout_layer_pixels(ref, id, world); },
      [&] { *world = nullptr; });
}

PF_Err CheckoutOutput(PF_ProgPtr ref, PF_EffectWorld** world) {
  return Answer(
      {Entry::kCheckoutOutput}, [&] { return theirs.smartRender.checkout_output(ref, world); },
      [&] { *world = nullptr; });
}

}  // namespace

Telling& CurrentTelling() noexcept {
  return telling;
}

void DecorateRecords(LyingHost& host, PF_InData& in, PF_UtilCallbacks& utils) {
  telling.host = &host;
  theirs.inter = in.inter;
  theirs.utils = utils;
  in.inter = {CheckoutParam, CheckinParam, AddParam, Abort, Progress};
  in.pica_basicP = BasicSuite(in.pica_basicP);
  utils.fill = Fill;
  utils.copy = Copy;
  utils.host_new_handle = utils.host_new_handle == nullptr ? nullptr : HostNewHandle;
  utils.host_dispose_handle = utils.host_dispose_handle == nullptr ? nullptr : HostDisposeHandle;
}

PF_PreRenderCallbacks PreRenderCallbacks(const PF_PreRenderCallbacks& lent) {
  theirs.preRender = lent;
  return {CheckoutLayer};
}

PF_SmartRenderCallbacks SmartRenderCallbacks(const PF_SmartRenderCallbacks& lent) {
  theirs.smartRender = lent;
  return {CheckoutLayerPixels, CheckoutOutput};
}

void ResetCalls() {
  telling.plan = {};
}

void PlanLie(const Fault& fault) {
  telling.plan.fault = fault;
  telling.plan.calls = {};
  telling.plan.told = 0;
}

std::uint64_t LiesTold() {
  return telling.plan.told;
}

std::uint64_t CallsOf(Entry entry) {
  return telling.plan.calls[static_cast<std::size_t>(entry)];
}

}  // namespace cli::check
