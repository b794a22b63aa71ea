// The effect's parameters as this standard has them: numbers from 0 to 1, made from the effect's
// declarations.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "minihost/parameter/info.h"

namespace frei0r {

/// One parameter of the plug-in.  A number across a slider's travel, a checkbox, a color, one choice of
/// several, or one side of a point.
struct Parameter {
  enum class Kind { kSlider, kCheckbox, kColor, kChoice, kPointX, kPointY, kFrameRate, kTimeUnit };

  Kind kind;
  std::string name;
  std::string explanation;                        // with range and unit
  const minihost::ParameterInfo* info = nullptr;  // none for what only this standard needs
};

/// What a host has set: the first element alone, but for colors.
using Setting = std::array<double, 3>;

/// Every value of the effect in the order of its declarations, a point as two, then the frame rate and the
/// unit of time.  The order is what some hosts address parameters by.  Points into `list`.
std::vector<Parameter> MakeParameters(const minihost::ParameterList& list);

/// The setting that stands for the effect's default, or for finding out.
Setting DefaultOf(const Parameter& parameter);

/// The number that a setting stands for: a slider's 0..1 is its travel, and what lies beyond goes on up to
/// the valid range and no farther; choices are equal bands.  Not a number stands for the default.  Rounded to
/// twelve digits, so that the setting of a decimal number gives that number.
double NumberOf(const Parameter& parameter, double setting);

/// Channels 0..255 of a setting with channels 0..1.
minihost::Color ColorOf(const Setting& setting);

/// Frames a second that a setting of the frame rate stands for: 0..1 is 0..100, and above 1 the setting is
/// the rate itself.  0 and less, and what is no number, is 0: find out.
double FramesPerSecondOf(double setting);

}  // namespace frei0r
