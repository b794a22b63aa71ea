#include "bindings/frei0r/parameters.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace frei0r {
namespace {

using minihost::ParameterInfo;
using Kind = Parameter::Kind;

constexpr double kRateSpan = 100;   // frames a second of a setting of 1
constexpr double kPointLow = 0;     // percent of the layer at a setting of 0
constexpr double kPointSpan = 100;  // to a setting of 1

/// Twelve digits leave room for the rounding of a setting and keep every number that a person writes.
double RoundToDigits(double value) {
  constexpr int kDigits = 12;
  if (value == 0 || !std::isfinite(value)) {
    return value;
  }
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text.precision(kDigits);
  text << value;
  std::istringstream back(text.str());
  back.imbue(std::locale::classic());
  back >> value;
  return value;
}

std::string NumberText(double number) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << number;
  return text.str();
}

std::string SliderText(const ParameterInfo& info) {
  return "0..1 is " + NumberText(info.sliderMin) + ".." + NumberText(info.sliderMax) +
         "; beyond, up to the valid " + NumberText(info.validMin) + ".." + NumberText(info.validMax);
}

std::string ChoiceText(const ParameterInfo& info) {
  std::string text;
  for (std::size_t i = 0; i < info.choices.size(); ++i) {
    text += (i > 0 ? ", " : "") + std::string("from ") +
            NumberText(static_cast<double>(i) / static_cast<double>(info.choices.size())) + " on " +
            info.choices[i];
  }
  return text;
}

void AddValue(const ParameterInfo& info, std::vector<Parameter>& parameters) {
  const std::string& name = info.DisplayName();
  switch (info.type) {
    case PF_Param_CHECKBOX:
      parameters.push_back({Kind::kCheckbox, name, "on or off", &info});
      break;
    case PF_Param_COLOR:
      parameters.push_back({Kind::kColor, name, "of the flakes", &info});
      break;
    case PF_Param_POPUP:
      parameters.push_back({Kind::kChoice, name, ChoiceText(info), &info});
      break;
    case PF_Param_POINT:
      parameters.push_back(
          {Kind::kPointX, name + " X", "0..1 is the width of the picture, 0.5 its middle", &info});
      parameters.push_back(
          {Kind::kPointY, name + " Y", "0..1 is the height of the picture, 0.5 its middle", &info});
      break;
    default:
      parameters.push_back({Kind::kSlider, name, SliderText(info), &info});
  }
}

}  // namespace

std::vector<Parameter> MakeParameters(const minihost::ParameterList& list) {
  std::vector<Parameter> parameters;
  for (const ParameterInfo& info : list) {
    if (info.HasValue()) {
      AddValue(info, parameters);
    }
  }
  parameters.push_back({Kind::kFrameRate, "Frame Rate",
                        "frames a second: 0 finds out, 0..1 is 0..100, above 1 the rate itself"});
  parameters.push_back(
      {Kind::kTimeUnit, "Time Unit",
       "of the host's times: from 0 on found out, from 0.333 on seconds, from 0.667 on milliseconds"});
  return parameters;
}

Setting DefaultOf(const Parameter& parameter) {
  if (parameter.info == nullptr) {
    return {};
  }
  const ParameterInfo& info = *parameter.info;
  const minihost::Value& value = *info.defaultValue;
  switch (parameter.kind) {
    case Kind::kColor: {
      const auto& color = std::get<minihost::Color>(value);
      return {color.red / 255, color.green / 255, color.blue / 255};
    }
    case Kind::kPointX:
      return {(std::get<minihost::Point>(value).x - kPointLow) / kPointSpan};
    case Kind::kPointY:
      return {(std::get<minihost::Point>(value).y - kPointLow) / kPointSpan};
    case Kind::kCheckbox:
      return {std::get<double>(value)};
    case Kind::kChoice:
      // The middle of the choice's band.
      return {(std::get<double>(value) - 0.5) / static_cast<double>(info.choices.size())};
    default:
      return {(std::get<double>(value) - info.sliderMin) / (info.sliderMax - info.sliderMin)};
  }
}

double NumberOf(const Parameter& parameter, double setting) {
  if (std::isnan(setting)) {
    setting = DefaultOf(parameter)[0];
  }
  const ParameterInfo& info = *parameter.info;
  switch (parameter.kind) {
    case Kind::kCheckbox:
      return setting >= 0.5 ? 1 : 0;
    case Kind::kChoice: {
      const auto count = static_cast<double>(info.choices.size());
      return std::clamp(std::floor(setting * count) + 1, 1.0, count);
    }
    case Kind::kPointX:
    case Kind::kPointY: {
      // Far outside of every picture, and still a position in 16.16.
      constexpr double kFarthest = 100 * kPointSpan;
      return RoundToDigits(std::clamp(kPointLow + setting * kPointSpan, -kFarthest, kFarthest));
    }
    default: {
      const double number = info.sliderMin + setting * (info.sliderMax - info.sliderMin);
      const double valid = std::clamp(RoundToDigits(number), info.validMin, info.validMax);
      return info.type == PF_Param_SLIDER ? std::round(valid) : valid;
    }
  }
}

minihost::Color ColorOf(const Setting& setting) {
  const auto channel = [](double v) { return v > 0 ? RoundToDigits(std::min(v, 1.0) * 255) : 0; };
  return {channel(setting[0]), channel(setting[1]), channel(setting[2])};
}

double FramesPerSecondOf(double setting) {
  if (!(setting > 0)) {
    return 0;
  }
  return setting <= 1 ? RoundToDigits(setting * kRateSpan) : setting;
}

}  // namespace frei0r
