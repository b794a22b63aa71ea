// The effect's parameters as OpenFX has them: declared once, read at any time.
#pragma once

#include <string>
#include <vector>

#include "bindings/openfx/host.h"
#include "minihost/parameter/info.h"

namespace openfx {

/// The name that hosts save a parameter or group under: the words of the display name in one, the first in
/// lower case, such as "variationSize" for "Variation % (Size)".
std::string ScriptName(const std::string& displayName);

/// Declares groups, one page and every value.  Percent of the layer are two plain numbers, since hosts differ
/// in what the default of a pair means.
void DefineParameters(const Suites& suites, OfxParamSetHandle set, const minihost::ParameterList& list);

/// The parameters of one instance, for the time of one action.  What a host gives is brought into the valid
/// range; what it cannot give is the default.
class HostParameters {
 public:
  HostParameters(const Suites& suites, OfxImageEffectHandle effect, const minihost::ParameterList& list);

  /// The value at a time in frames.
  minihost::Value At(int parameter, double time) const;

  /// The times of the keys; empty too where the host does not say.
  std::vector<double> KeyTimes(int parameter) const;

  /// Greys the parameter out or back in.
  void SetDisabled(int parameter, bool isDisabled) const;

  const minihost::ParameterList& List() const { return list_; }

 private:
  struct Held {
    std::vector<OfxParamHandle> params;  // one, or the two of a point
    std::vector<OfxPropertySetHandle> properties;
  };

  double Number(OfxParamHandle param, double time, double fallback) const;
  int Whole(OfxParamHandle param, double time, int fallback) const;

  const Suites& suites_;
  const minihost::ParameterList& list_;
  std::vector<Held> held_;  // by index
};

}  // namespace openfx
