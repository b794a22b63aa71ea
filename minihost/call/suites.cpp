#include "minihost/call/suites.h"

#include <cstring>
#include <iterator>

#include "minihost/call/callbacks.h"
#include "minihost/call/command.h"
#include "minihost/call/sampling_suites.h"
#include "minihost/call/world_suites.h"

namespace minihost {
namespace {

void* LockHandle(PF_Handle handle) noexcept {
  Command* command = Command::Current();
  if (command == nullptr || command->session.faults.Refuses(Service::kLockHandle)) {
    return nullptr;
  }
  void* bytes = command->session.handles.Lock(handle);
  if (bytes == nullptr) {
    Answer([&]() -> PF_Err {
      command->session.ledger.AddFault("locked what is no handle");
      return PF_Err_NONE;
    });
  }
  return bytes;
}

void UnlockHandle(PF_Handle handle) noexcept {
  Command* command = Command::Current();
  if (command == nullptr || command->session.handles.Unlock(handle)) {
    return;
  }
  Answer([&]() -> PF_Err {
    command->session.ledger.AddFault("unlocked a handle that is not locked");
    return PF_Err_NONE;
  });
}

PF_Err UpdateParamUi(PF_ProgPtr effect_ref, std::int32_t index, const PF_ParamDef* def) noexcept {
  return Answer([&]() -> PF_Err {
    Command* command = Command::Named(effect_ref);
    if (command == nullptr) {
      return PF_Err_BAD_CALLBACK_PARAM;
    }
    Session& session = command->session;
    if (const auto refusal = session.faults.Refuses(Service::kUpdateParamUi)) {
      return *refusal;
    }
    if (def == nullptr || index < 1 || index >= std::ssize(session.definitions)) {
      session.ledger.AddFault("changed the look of parameter " + std::to_string(index) +
                              ", which is not there");
      return PF_Err_BAD_CALLBACK_PARAM;
    }
    PF_ParamDef& definition = session.definitions[static_cast<std::size_t>(index)];
    definition.ui_flags = def->ui_flags;
    definition.flags = def->flags;
    return PF_Err_NONE;
  });
}

constexpr PF_HandleSuite1 kHandleSuite{NewHandle, LockHandle, UnlockHandle, DisposeHandle};
constexpr PF_ParamUtilsSuite1 kParamUtilsSuite{UpdateParamUi};

struct Offer {
  const char* name;
  std::int32_t version;
  const void* suite;
  const void* refusingSuite;  // lent instead while calls of the suite are to be refused; mostly the same
};

const Offer kOffers[] = {
    {kPFHandleSuite, 1, &kHandleSuite, &kHandleSuite},
    {kPFWorldSuite, 1, &kWorldSuite1, &kWorldSuite1},
    {kPFWorldSuite, 2, &kWorldSuite2, &kWorldSuite2},
    {kPFParamUtilsSuite, 1, &kParamUtilsSuite, &kParamUtilsSuite},
    {kPFSampling8Suite, 1, &kSampling8Suite, &kRefusingSampling8Suite},
    {kPFSampling16Suite, 1, &kSampling16Suite, &kRefusingSampling16Suite},
    {kPFSamplingFloatSuite, 1, &kSamplingFloatSuite, &kRefusingSamplingFloatSuite},
};

const Offer* OfferOf(const char* name, std::int32_t version) noexcept {
  for (const Offer& offer : kOffers) {
    if (name != nullptr && offer.version == version && std::strcmp(offer.name, name) == 0) {
      return &offer;
    }
  }
  return nullptr;
}

std::int32_t AcquireSuite(const char* name, std::int32_t version, const void** suite) noexcept {
  return Answer([&]() -> PF_Err {
    Command* command = Command::Current();
    const Offer* offer = OfferOf(name, version);
    if (command == nullptr || offer == nullptr || suite == nullptr) {
      return PF_Err_BAD_CALLBACK_PARAM;
    }
    Session& session = command->session;
    if (session.faults.LacksSuite(name, version)) {
      return PF_Err_BAD_CALLBACK_PARAM;
    }
    session.ledger.Lend(Ledger::Kind::kSuite, offer, offer->name, version);
    *suite = session.faults.Touches(Service::kSubpixelSample) ? offer->refusingSuite : offer->suite;
    return PF_Err_NONE;
  });
}

std::int32_t ReleaseSuite(const char* name, std::int32_t version) noexcept {
  return Answer([&]() -> PF_Err {
    Command* command = Command::Current();
    if (command == nullptr) {
      return PF_Err_BAD_CALLBACK_PARAM;
    }
    const bool known =
        command->session.ledger.Return(Ledger::Kind::kSuite, OfferOf(name, version), name, version);
    return known ? PF_Err_NONE : PF_Err_BAD_CALLBACK_PARAM;
  });
}

}  // namespace

const SPBasicSuite kBasicSuite{AcquireSuite, ReleaseSuite};

}  // namespace minihost
