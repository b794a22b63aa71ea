// What the binding asks of its host: suites, and properties that may be missing.
#pragma once

#include <memory>
#include <string>

#include "bindings/openfx/ofx.h"

namespace openfx {

/// An action ends with this status; the host has been told why, or knows.
struct ActionError {
  OfxStatus status;
  std::string message;  // for the user; empty: none
};

/// The suites of a host.  The first three are there; the last two may be null.
struct Suites {
  const OfxPropertySuite* property;
  const OfxImageEffectSuite* effect;
  const OfxParameterSuite* parameter;
  const OfxMessageSuite* message;
  const OfxProgressSuite* progress;
};

/// Fetches the suites.  Throws ActionError where one is missing that is needed.
Suites FetchSuites(const OfxHost* host);

/// A property set of the host's.  Getters give the fallback for what the host does not know; setters tell and
/// go on.  May stand for no set at all.
class Properties {
 public:
  Properties(const Suites& suites, OfxPropertySetHandle set) : suite_(suites.property), set_(set) {}

  int Int(const char* name, int fallback, int index = 0) const;
  double Double(const char* name, double fallback, int index = 0) const;
  std::string String(const char* name) const;  // empty where there is none
  void* Pointer(const char* name) const;       // null where there is none

  void SetInt(const char* name, int value, int index = 0) const;
  void SetDouble(const char* name, double value, int index = 0) const;
  void SetString(const char* name, const std::string& value, int index = 0) const;

 private:
  const OfxPropertySuite* suite_;
  OfxPropertySetHandle set_;
};

}  // namespace openfx
