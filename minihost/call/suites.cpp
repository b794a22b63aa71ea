#include "minihost/call/suites.h"

#include <cstring>
#include <iterator>

#include "minihost/call/answer.h"
#include "minihost/call/callbacks.h"
#include "minihost/call/sampling_suites.h"
#include "minihost/call/world_suites.h"

namespace minihost {
namespace {

void* LockHandle(PF_Handle handle) noexcept {
  void* bytes = nullptr;
  Answer(Command::Current(), Service::kLockHandle, [&](Command& command) {
    bytes = command.session.handles.Lock(handle);
    return bytes != nullptr ? PF_Err_NONE : AnswerToFault(command, "locked what is no handle");
  });
  return bytes;
}

void UnlockHandle(PF_Handle handle) noexcept {
  Answer(Command::Current(), [&](Command& command) {
    const bool done = command.session.handles.Unlock(handle);
    return done ? PF_Err_NONE : AnswerToFault(command, "unlocked a handle that is not locked");
  });
}

PF_Err UpdateParamUi(PF_ProgPtr effect_ref, std::int32_t index, const PF_ParamDef* def) noexcept {
  return Answer(Command::Named(effect_ref), Service::kUpdateParamUi, [&](Command& command) {
    std::vector<PF_ParamDef>& definitions = command.session.definitions;
    if (def == nullptr || index < 1 || index >= std::ssize(definitions)) {
      return AnswerToFault(command,
                           "changed the look of parameter " + std::to_string(index) + ", which is not there");
    }
    PF_ParamDef& definition = definitions[static_cast<std::size_t>(index)];
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
  const Offer* offer = OfferOf(name, version);
  return Answer(WithGiven(Command::Current(), offer, suite), [&](Command& command) {
    Session& session = command.session;
    if (session.faults.LacksSuite(name, version)) {
      return PF_Err_BAD_CALLBACK_PARAM;
    }
    session.ledger.Lend(Ledger::Kind::kSuite, offer, offer->name, version);
    *suite = session.faults.Touches(Service::kSubpixelSample) ? offer->refusingSuite : offer->suite;
    return PF_Err_NONE;
  });
}

std::int32_t ReleaseSuite(const char* name, std::int32_t version) noexcept {
  return Answer(Command::Current(), [&](Command& command) {
    const bool known =
        command.session.ledger.Return(Ledger::Kind::kSuite, OfferOf(name, version), name, version);
    return known ? PF_Err_NONE : PF_Err_BAD_CALLBACK_PARAM;
  });
}

}  // namespace

const SPBasicSuite kBasicSuite{AcquireSuite, ReleaseSuite};

}  // namespace minihost
