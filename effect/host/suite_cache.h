// The host suites that one command has acquired.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "effect/host/suite_catalogue.h"
#include "hostapi/suites.h"

/// Acquires a suite the first time it is asked for and holds it until the cache is destroyed, which releases
/// every suite under the name and version it was acquired with.  A suite that the host cannot supply, one
/// that lacks an operation which the effect needs of it, or one that the catalogue does not know, throws the
/// plain integer PF_Err_BAD_CALLBACK_PARAM; the entry turns that into the command's result.
///
/// A cache belongs to one command on one thread.
class AEGP_SuiteHandler {
 public:
  /// Throws when `pica_basicP` is null.
  explicit AEGP_SuiteHandler(const SPBasicSuite* pica_basicP);
  ~AEGP_SuiteHandler() { ReleaseAllSuites(); }
  AEGP_SuiteHandler(const AEGP_SuiteHandler&) = delete;
  AEGP_SuiteHandler& operator=(const AEGP_SuiteHandler&) = delete;

  const PF_HandleSuite1* HandleSuite1() const {
    return Cached<kHandleSlot>(&PF_HandleSuite1::host_new_handle, &PF_HandleSuite1::host_lock_handle,
                               &PF_HandleSuite1::host_dispose_handle);
  }
  const PF_WorldSuite1* WorldSuite1() const {
    return Cached<kWorldSlot1>(&PF_WorldSuite1::new_world, &PF_WorldSuite1::dispose_world);
  }
  const PF_WorldSuite2* WorldSuite2() const {
    return Cached<kWorldSlot2>(&PF_WorldSuite2::PF_NewWorld, &PF_WorldSuite2::PF_DisposeWorld);
  }
  const PF_ParamUtilsSuite1* ParamUtilsSuite1() const {
    return Cached<kParamUtilsSlot>(&PF_ParamUtilsSuite1::PF_UpdateParamUI);
  }
  const PF_Sampling8Suite1* Sampling8Suite1() const {
    return Cached<kSampling8Slot>(&PF_Sampling8Suite1::subpixel_sample);
  }
  const PF_Sampling16Suite1* Sampling16Suite1() const {
    return Cached<kSampling16Slot>(&PF_Sampling16Suite1::subpixel_sample16);
  }
  const PF_SamplingFloatSuite1* SamplingFloatSuite1() const {
    return Cached<kSamplingFloatSlot>(&PF_SamplingFloatSuite1::subpixel_sample_float);
  }

  /// Any suite of the catalogue, by the slot that FindSuite names.
  const void* Suite(std::size_t slot) const;

  /// Straight from the host, past the slots: never null, and the caller's to release.
  void* LoadSuite(const char* name, std::int32_t version) const;
  void ReleaseSuite(const char* name, std::int32_t version) const;

  /// Releases what the slots hold without clearing them; the destructor is its only caller.  An exception of
  /// the host's ends there: the suites after it are released all the same.
  void ReleaseAllSuites() const noexcept;

  [[noreturn]] void MissingSuiteError() const;

 private:
  static constexpr std::size_t kHandleSlot = FindSuite(kPFHandleSuite, 1);
  static constexpr std::size_t kWorldSlot1 = FindSuite(kPFWorldSuite, 1);
  static constexpr std::size_t kWorldSlot2 = FindSuite(kPFWorldSuite, 2);
  static constexpr std::size_t kParamUtilsSlot = FindSuite(kPFParamUtilsSuite, 1);
  static constexpr std::size_t kSampling8Slot = FindSuite(kPFSampling8Suite, 1);
  static constexpr std::size_t kSampling16Slot = FindSuite(kPFSampling16Suite, 1);
  static constexpr std::size_t kSamplingFloatSlot = FindSuite(kPFSamplingFloatSuite, 1);

  // The suite of a slot, with all of the operations named.
  template <std::size_t slot, class Table, class... Functions>
  const Table* Cached(Functions Table::*... needed) const {
    static_assert(slot < kSuiteCatalogue.size());
    const auto* const table = static_cast<const Table*>(Suite(slot));
    if (((table->*needed == nullptr) || ...)) {
      MissingSuiteError();
    }
    return table;
  }

  const SPBasicSuite* basicSuite;                                       // never null
  mutable std::array<const void*, kSuiteCatalogue.size()> slots_ = {};  // null until acquired
};
