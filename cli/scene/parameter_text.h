// Parameter values as users write them.
#pragma once

#include <string>
#include <string_view>

#include "minihost/parameter/info.h"

namespace cli {

/// The value that `text` stands for, inside the parameter's valid range.
///
///   sliders     12.5; a percent sign may follow where the name has one; integer sliders take whole numbers
///   checkboxes  on, off, true, false, 1, 0
///   popups      a choice's name or its number, from 1
///   colours     #rrggbb, #rgb, red,green,blue as 0..255, or a name that style sheets have
///   points      x,y in percent of the layer; a percent sign may follow each
///
/// Words in letters of either case.  Throws ToolError(kUsage), naming parameter, value and what is possible.
minihost::Value ParseValue(const minihost::ParameterInfo& parameter, std::string_view text);

/// A value of this parameter in the form that ParseValue reads, at the parameter's decimals or as many more
/// as tell the value apart.
std::string FormatValue(const minihost::ParameterInfo& parameter, const minihost::Value& value);

/// What ParseValue accepts, for people: "0 to 15", "off or on", "Composite or Lighten".
std::string DescribeRange(const minihost::ParameterInfo& parameter);

/// "number", "integer", "checkbox", "popup", "color" or "point".
std::string_view DescribeType(const minihost::ParameterInfo& parameter);

}  // namespace cli
