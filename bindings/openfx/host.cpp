#include "bindings/openfx/host.h"

namespace openfx {

Suites FetchSuites(const OfxHost* host) {
  if (host == nullptr || host->fetchSuite == nullptr) {
    throw ActionError{kMissingHostFeature, ""};
  }
  const auto fetch = [&](const char* name) { return host->fetchSuite(host->host, name, 1); };
  const Suites suites = {static_cast<const OfxPropertySuite*>(fetch("OfxPropertySuite")),
                         static_cast<const OfxImageEffectSuite*>(fetch("OfxImageEffectSuite")),
                         static_cast<const OfxParameterSuite*>(fetch("OfxParameterSuite")),
                         static_cast<const OfxMessageSuite*>(fetch("OfxMessageSuite")),
                         static_cast<const OfxProgressSuite*>(fetch("OfxProgressSuite"))};
  if (suites.property == nullptr || suites.effect == nullptr || suites.parameter == nullptr) {
    throw ActionError{kMissingHostFeature, ""};
  }
  return suites;
}

int Properties::Int(const char* name, int fallback, int index) const {
  int value = fallback;
  return set_ != nullptr && suite_->propGetInt(set_, name, index, &value) == kOk ? value : fallback;
}

double Properties::Double(const char* name, double fallback, int index) const {
  double value = fallback;
  return set_ != nullptr && suite_->propGetDouble(set_, name, index, &value) == kOk ? value : fallback;
}

std::string Properties::String(const char* name) const {
  char* value = nullptr;
  const bool isThere = set_ != nullptr && suite_->propGetString(set_, name, 0, &value) == kOk;
  return isThere && value != nullptr ? value : "";
}

void* Properties::Pointer(const char* name) const {
  void* value = nullptr;
  return set_ != nullptr && suite_->propGetPointer(set_, name, 0, &value) == kOk ? value : nullptr;
}

void Properties::SetInt(const char* name, int value, int index) const {
  if (set_ != nullptr) {
    suite_->propSetInt(set_, name, index, value);
  }
}

void Properties::SetDouble(const char* name, double value, int index) const {
  if (set_ != nullptr) {
    suite_->propSetDouble(set_, name, index, value);
  }
}

void Properties::SetString(const char* name, const std::string& value, int index) const {
  if (set_ != nullptr) {
    suite_->propSetString(set_, name, index, value.c_str());
  }
}

}  // namespace openfx
