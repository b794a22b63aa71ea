#include "effect/host/suite_cache.h"

#include "hostapi/types.h"

AEGP_SuiteHandler::AEGP_SuiteHandler(const SPBasicSuite* pica_basicP) : basicSuite(pica_basicP) {
  if (basicSuite == nullptr) {
    MissingSuiteError();
  }
}

const void* AEGP_SuiteHandler::Suite(std::size_t slot) const {
  if (slot >= slots_.size()) {
    MissingSuiteError();
  }
  if (slots_[slot] == nullptr) {
    slots_[slot] = LoadSuite(kSuiteCatalogue[slot].name, kSuiteCatalogue[slot].version);
  }
  return slots_[slot];
}

void* AEGP_SuiteHandler::LoadSuite(const char* name, std::int32_t version) const {
  const void* suite = nullptr;
  if (basicSuite->AcquireSuite(name, version, &suite) != 0 || suite == nullptr) {
    MissingSuiteError();
  }
  return const_cast<void*>(suite);
}

void AEGP_SuiteHandler::ReleaseSuite(const char* name, std::int32_t version) const {
  basicSuite->ReleaseSuite(name, version);
}

void AEGP_SuiteHandler::ReleaseAllSuites() const noexcept {
  for (std::size_t slot = 0; slot < slots_.size(); ++slot) {
    if (slots_[slot] == nullptr) {
      continue;
    }
    try {
      ReleaseSuite(kSuiteCatalogue[slot].name, kSuiteCatalogue[slot].version);
    } catch (...) {  // results of releases do not count either
    }
  }
}

void AEGP_SuiteHandler::MissingSuiteError() const {
  throw PF_Err{PF_Err_BAD_CALLBACK_PARAM};
}
