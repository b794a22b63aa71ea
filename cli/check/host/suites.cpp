#include "cli/check/host/suites.h"

#include <cstring>

#include "cli/check/host/answer.h"

namespace cli::check {
namespace {

// The host's own suites, of the last acquisition each.
struct Theirs {
  const SPBasicSuite* basic;
  const PF_HandleSuite1* handles;
  const PF_WorldSuite1* worlds1;
  const PF_WorldSuite2* worlds2;
  const PF_ParamUtilsSuite1* paramUtils;
  const PF_Sampling8Suite1* sampling8;
  const PF_Sampling16Suite1* sampling16;
  const PF_SamplingFloatSuite1* samplingFloat;
} theirs;

// Worlds that were claimed to be made: the host takes them back.
int claimedWorlds = 0;

PF_Handle NewHandle(std::uint64_t size) {
  return AnswerPointer({Entry::kNewHandle}, [&] { return theirs.handles->host_new_handle(size); });
}
void* LockHandle(PF_Handle handle) {
  return AnswerPointer({Entry::kLockHandle}, [&] { return theirs.handles->host_lock_handle(handle); });
}
void UnlockHandle(PF_Handle handle) {
  const HostSide side;
  theirs.handles->host_unlock_handle(handle);
}
void DisposeHandle(PF_Handle handle) {
  AnswerReturn({Entry::kDisposeHandle}, [&] { theirs.handles->host_dispose_handle(handle); });
}

void ClaimWorld(PF_EffectWorld* world) {
  *world = {};
  ++claimedWorlds;
}

PF_Err NewWorld1(PF_ProgPtr ref, std::int32_t width, std::int32_t height, PF_NewWorldFlags flags,
                 PF_EffectWorld* world) {
  return Answer(
      {Entry::kNewWorld}, [&] { return theirs.worlds1->new_world(ref, width, height, flags, world); },
      [&] { ClaimWorld(world); });
}
PF_Err NewWorld2(PF_ProgPtr ref, std::int32_t width, std::int32_t height, PF_Boolean clear,
                 PF_PixelFormat format, PF_EffectWorld* world) {
  return Answer(
      {Entry::kNewWorld},
      [&] { return theirs.worlds2->PF_NewWorld(ref, width, height, clear, format, world); },
      [&] { ClaimWorld(world); });
}

template <class Forward>
PF_Err Dispose(const PF_EffectWorld* world, Forward forward) {
  return AnswerReturn({Entry::kDisposeWorld}, [&] {
    if (world != nullptr && world->data == nullptr && claimedWorlds > 0) {
      --claimedWorlds;
      return PF_Err_NONE;
    }
    return forward();
  });
}
PF_Err DisposeWorld1(PF_ProgPtr ref, PF_EffectWorld* world) {
  return Dispose(world, [&] { return theirs.worlds1->dispose_world(ref, world); });
}
PF_Err DisposeWorld2(PF_ProgPtr ref, PF_EffectWorld* world) {
  return Dispose(world, [&] { return theirs.worlds2->PF_DisposeWorld(ref, world); });
}
PF_Err GetPixelFormat(const PF_EffectWorld* world, PF_PixelFormat* format) {
  return Answer({Entry::kPixelFormat}, [&] { return theirs.worlds2->PF_GetPixelFormat(world, format); });
}

PF_Err UpdateParamUi(PF_ProgPtr ref, std::int32_t index, const PF_ParamDef* def) {
  return Answer({Entry::kUpdateParamUi, nullptr, index},
                [&] { return theirs.paramUtils->PF_UpdateParamUI(ref, index, def); });
}

PF_Err Sample8(PF_ProgPtr ref, PF_Fixed x, PF_Fixed y, const PF_SampPB* from, PF_Pixel* to) {
  return Answer({Entry::kSample}, [&] { return theirs.sampling8->subpixel_sample(ref, x, y, from, to); });
}
PF_Err Sample16(PF_ProgPtr ref, PF_Fixed x, PF_Fixed y, const PF_SampPB* from, PF_Pixel16* to) {
  return Answer({Entry::kSample}, [&] { return theirs.sampling16->subpixel_sample16(ref, x, y, from, to); });
}
PF_Err SampleFloat(PF_ProgPtr ref, PF_Fixed x, PF_Fixed y, const PF_SampPB* from, PF_PixelFloat* to) {
  return Answer({Entry::kSample},
                [&] { return theirs.samplingFloat->subpixel_sample_float(ref, x, y, from, to); });
}

constexpr PF_HandleSuite1 kHandles{NewHandle, LockHandle, UnlockHandle, DisposeHandle};
constexpr PF_WorldSuite1 kWorlds1{NewWorld1, DisposeWorld1};
constexpr PF_WorldSuite2 kWorlds2{NewWorld2, DisposeWorld2, GetPixelFormat};
constexpr PF_ParamUtilsSuite1 kParamUtils{UpdateParamUi};
constexpr PF_Sampling8Suite1 kSampling8{nullptr, Sample8};
constexpr PF_Sampling16Suite1 kSampling16{nullptr, Sample16};
constexpr PF_SamplingFloatSuite1 kSamplingFloat{nullptr, SampleFloat};

// As many nulls as the largest of them has functions.
constexpr PF_HandleSuite1 kNoFunctions{};

template <class Suite, const Suite* Theirs::*place>
void Keep(const void* suite) {
  theirs.*place = static_cast<const Suite*>(suite);
}

struct Decorated {
  const char* name;
  std::int32_t version;
  const void* ours;
  void (*keep)(const void* suite);
};

constexpr Decorated kDecorated[] = {
    {kPFHandleSuite, 1, &kHandles, Keep<PF_HandleSuite1, &Theirs::handles>},
    {kPFWorldSuite, 1, &kWorlds1, Keep<PF_WorldSuite1, &Theirs::worlds1>},
    {kPFWorldSuite, 2, &kWorlds2, Keep<PF_WorldSuite2, &Theirs::worlds2>},
    {kPFParamUtilsSuite, 1, &kParamUtils, Keep<PF_ParamUtilsSuite1, &Theirs::paramUtils>},
    {kPFSampling8Suite, 1, &kSampling8, Keep<PF_Sampling8Suite1, &Theirs::sampling8>},
    {kPFSampling16Suite, 1, &kSampling16, Keep<PF_Sampling16Suite1, &Theirs::sampling16>},
    {kPFSamplingFloatSuite, 1, &kSamplingFloat, Keep<PF_SamplingFloatSuite1, &Theirs::samplingFloat>},
};

const Decorated* Find(const char* name, std::int32_t version) {
  for (const Decorated& suite : kDecorated) {
    if (name != nullptr && suite.version == version && std::strcmp(suite.name, name) == 0) {
      return &suite;
    }
  }
  return nullptr;
}

std::int32_t AcquireSuite(const char* name, std::int32_t version, const void** suite) {
  const Decorated* const known = Find(name, version);
  const char* const ownName = known == nullptr ? nullptr : known->name;
  const auto forward = [&] {
    const std::int32_t status = theirs.basic->AcquireSuite(name, version, suite);
    if (status == 0 && known != nullptr) {
      known->keep(*suite);
      *suite = known->ours;
    }
    return status;
  };
  return Answer({Entry::kAcquireSuite, ownName, version}, forward, [&] {
    if (CurrentTelling().plan.fault->lie == Lie::kNoFunctions && forward() == 0) {
      *suite = &kNoFunctions;
    }
  });
}

std::int32_t ReleaseSuite(const char* name, std::int32_t version) {
  return AnswerReturn({Entry::kReleaseSuite, nullptr, version},
                      [&] { return theirs.basic->ReleaseSuite(name, version); });
}

constexpr SPBasicSuite kBasic{AcquireSuite, ReleaseSuite};

}  // namespace

const SPBasicSuite* BasicSuite(const SPBasicSuite* lent) noexcept {
  theirs.basic = lent;
  return lent == nullptr ? nullptr : &kBasic;
}

}  // namespace cli::check
