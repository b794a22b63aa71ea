// What the effect declared about one parameter, in the host's own terms.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hostapi/params.h"
#include "minihost/parameter/track.h"

namespace minihost {

struct ParameterInfo {
  int index = 0;                       // position in the effect's parameter array; 0 is the input layer
  int id = 0;                          // stable between versions of the effect
  PF_ParamType type = PF_Param_LAYER;  // PF_Param_...
  std::string name;                    // as declared; may be empty
  std::string label;                   // the text beside a checkbox, else empty
  std::string group;                   // display name of the innermost enclosing group; empty outside
  PF_ParamFlags flags = 0;             // PF_ParamFlag_...
  bool animatable = false;             // holds a value that may have keys
  bool collapsed = false;              // its disclosure triangle starts closed
  std::optional<Value> defaultValue;   // none for layers, group starts and group ends
  double validMin = 0;                 // what may be set; inclusive.  For sliders, checkboxes and popups
  double validMax = 0;
  double sliderMin = 0;  // the slider's travel; for sliders
  double sliderMax = 0;
  int decimals = 0;                  // decimals shown; for float sliders
  bool restrictedToLayer = false;    // a point that must stay within 0..100 percent
  std::vector<std::string> choices;  // of a popup; choice 1 is choices[0]

  /// The name that a user sees: `name`, or `label` where that is empty.
  const std::string& DisplayName() const noexcept { return name.empty() ? label : name; }

  /// Whether it has a value at all.  Layers and group marks have none.
  bool HasValue() const noexcept { return defaultValue.has_value(); }
};

/// All parameters in the order of their indices; element 0 is the input layer.  Shared by everybody who holds
/// values for them.
using ParameterList = std::vector<ParameterInfo>;
using SharedParameterList = std::shared_ptr<const ParameterList>;

/// The first parameter with a value and this display name (case matters), or null.
const ParameterInfo* FindParameter(const ParameterList& list, std::string_view displayName) noexcept;

/// Reads the effect's declarations, `definitions[0]` being the input layer.  Throws std::invalid_argument,
/// naming the parameter, for what a host could not show: an unknown type, a name without its closing zero,
/// a range that is upside down or not finite, a default outside it, choices that do not match their count,
/// or groups that do not nest.
ParameterList LearnParameters(const std::vector<PF_ParamDef>& definitions);

}  // namespace minihost
