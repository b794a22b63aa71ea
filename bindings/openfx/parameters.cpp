#include "bindings/openfx/parameters.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <sstream>

namespace openfx {
namespace {

using minihost::ParameterInfo;

constexpr char kPage[] = "controls";
// Far outside of every picture, and still a position in 16.16.
constexpr double kFarthestPercent = 10'000;

std::string NumberText(double number) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text.precision(10);
  text << number;
  return text.str();
}

/// The names of a value's parameters here: one, or two for a point.
std::vector<std::string> ScriptNames(const ParameterInfo& info) {
  const std::string name = ScriptName(info.DisplayName());
  return info.type == PF_Param_POINT ? std::vector{name + "X", name + "Y"} : std::vector{name};
}

std::string GroupName(const std::string& displayName) {
  return ScriptName(displayName) + "Group";
}

const char* TypeOf(PF_ParamType type) {
  switch (type) {
    case PF_Param_SLIDER:
      return "OfxParamTypeInteger";
    case PF_Param_CHECKBOX:
      return "OfxParamTypeBoolean";
    case PF_Param_POPUP:
      return "OfxParamTypeChoice";
    case PF_Param_COLOR:
      return "OfxParamTypeRGB";
    default:
      return "OfxParamTypeDouble";
  }
}

void SetDoubleRange(const Properties& properties, const ParameterInfo& info, double defaultValue) {
  const bool isPoint = info.type == PF_Param_POINT;
  properties.SetDouble("OfxParamPropDefault", defaultValue);
  properties.SetDouble("OfxParamPropMin", isPoint ? -kFarthestPercent : info.validMin);
  properties.SetDouble("OfxParamPropMax", isPoint ? kFarthestPercent : info.validMax);
  properties.SetDouble("OfxParamPropDisplayMin", isPoint ? 0 : info.sliderMin);
  properties.SetDouble("OfxParamPropDisplayMax", isPoint ? 100 : info.sliderMax);
  const int digits = isPoint ? 1 : info.decimals;
  properties.SetInt("OfxParamPropDigits", digits);
  properties.SetDouble("OfxParamPropIncrement", std::pow(10, -digits));
  properties.SetString("OfxParamPropDoubleType", "OfxParamDoubleTypePlain");
}

void SetRange(const Properties& properties, const ParameterInfo& info, bool isSecond) {
  const minihost::Value& value = *info.defaultValue;
  switch (info.type) {
    case PF_Param_SLIDER:
      properties.SetInt("OfxParamPropDefault", static_cast<int>(std::get<double>(value)));
      properties.SetInt("OfxParamPropMin", static_cast<int>(info.validMin));
      properties.SetInt("OfxParamPropMax", static_cast<int>(info.validMax));
      properties.SetInt("OfxParamPropDisplayMin", static_cast<int>(info.sliderMin));
      properties.SetInt("OfxParamPropDisplayMax", static_cast<int>(info.sliderMax));
      break;
    case PF_Param_CHECKBOX:
      properties.SetInt("OfxParamPropDefault", std::get<double>(value) != 0);
      break;
    case PF_Param_POPUP:
      for (std::size_t i = 0; i < info.choices.size(); ++i) {
        properties.SetString("OfxParamPropChoiceOption", info.choices[i], static_cast<int>(i));
      }
      properties.SetInt("OfxParamPropDefault", static_cast<int>(std::get<double>(value)) - 1);
      break;
    case PF_Param_COLOR: {
      const auto& color = std::get<minihost::Color>(value);
      properties.SetDouble("OfxParamPropDefault", color.red / 255, 0);
      properties.SetDouble("OfxParamPropDefault", color.green / 255, 1);
      properties.SetDouble("OfxParamPropDefault", color.blue / 255, 2);
      break;
    }
    case PF_Param_POINT: {
      const auto& point = std::get<minihost::Point>(value);
      SetDoubleRange(properties, info, isSecond ? point.y : point.x);
      break;
    }
    default:
      SetDoubleRange(properties, info, std::get<double>(value));
  }
}

std::string HintOf(const ParameterInfo& info) {
  switch (info.type) {
    case PF_Param_POINT:
      return "Percent of the picture, from its top left corner; 50 is the middle";
    case PF_Param_SLIDER:
    case PF_Param_FLOAT_SLIDER:
      return NumberText(info.validMin) + " to " + NumberText(info.validMax);
    default:
      return info.DisplayName();
  }
}

}  // namespace

std::string ScriptName(const std::string& displayName) {
  std::string name;
  bool isWordStart = false;
  for (const char c : displayName) {
    const auto letter = static_cast<unsigned char>(c);
    if (!std::isalnum(letter)) {
      isWordStart = !name.empty();
      continue;
    }
    name += static_cast<char>(isWordStart ? std::toupper(letter) : std::tolower(letter));
    isWordStart = false;
  }
  return name;
}

void DefineParameters(const Suites& suites, OfxParamSetHandle set, const minihost::ParameterList& list) {
  int children = 0;
  const auto define = [&](const char* type, const std::string& name, const std::string& label,
                          const std::string& group) {
    OfxPropertySetHandle handle = nullptr;
    if (suites.parameter->paramDefine(set, type, name.c_str(), &handle) != kOk) {
      throw ActionError{kFailed, "cannot define the parameter " + name};
    }
    const Properties properties(suites, handle);
    properties.SetString("OfxPropLabel", label);
    properties.SetString("OfxParamPropScriptName", name);
    if (!group.empty()) {
      properties.SetString("OfxParamPropParent", GroupName(group));
    }
    return handle;
  };
  const OfxPropertySetHandle page = define("OfxParamTypePage", kPage, "Controls", "");
  for (const ParameterInfo& info : list) {
    if (info.type == PF_Param_GROUP_START) {
      const OfxPropertySetHandle group =
          define("OfxParamTypeGroup", GroupName(info.name), info.name, info.group);
      Properties(suites, group).SetInt("OfxParamPropGroupOpen", info.collapsed ? 0 : 1);
    }
    if (!info.HasValue()) {
      continue;
    }
    const std::vector<std::string> names = ScriptNames(info);
    for (const std::string& name : names) {
      const bool isSecond = name != names.front();
      const std::string side = names.size() == 1 ? "" : isSecond ? " Y" : " X";
      const Properties properties(suites,
                                  define(TypeOf(info.type), name, info.DisplayName() + side, info.group));
      properties.SetString("OfxParamPropHint", HintOf(info));
      properties.SetInt("OfxParamPropAnimates", info.animatable ? 1 : 0);
      // A speed now moves the flakes of all frames to come.
      properties.SetString("OfxParamPropCacheInvalidation", "OfxParamInvalidateValueChangeToEnd");
      SetRange(properties, info, isSecond);
      Properties(suites, page).SetString("OfxParamPropPageChild", name, children++);
    }
  }
}

HostParameters::HostParameters(const Suites& suites, OfxImageEffectHandle effect,
                               const minihost::ParameterList& list)
    : suites_(suites), list_(list), held_(list.size()) {
  OfxParamSetHandle set = nullptr;
  if (suites.effect->getParamSet(effect, &set) != kOk || set == nullptr) {
    throw ActionError{kErrBadHandle, ""};
  }
  for (const ParameterInfo& info : list) {
    if (!info.HasValue()) {
      continue;
    }
    Held& held = held_[static_cast<std::size_t>(info.index)];
    for (const std::string& name : ScriptNames(info)) {
      OfxParamHandle param = nullptr;
      OfxPropertySetHandle properties = nullptr;
      if (suites.parameter->paramGetHandle(set, name.c_str(), &param, &properties) != kOk) {
        param = nullptr;
      }
      held.params.push_back(param);
      held.properties.push_back(properties);
    }
  }
}

double HostParameters::Number(OfxParamHandle param, double time, double fallback) const {
  double value = fallback;
  const bool isThere = param != nullptr && suites_.parameter->paramGetValueAtTime(param, time, &value) == kOk;
  return isThere && !std::isnan(value) ? value : fallback;
}

int HostParameters::Whole(OfxParamHandle param, double time, int fallback) const {
  int value = fallback;
  const bool isThere = param != nullptr && suites_.parameter->paramGetValueAtTime(param, time, &value) == kOk;
  return isThere ? value : fallback;
}

minihost::Value HostParameters::At(int parameter, double time) const {
  const ParameterInfo& info = list_[static_cast<std::size_t>(parameter)];
  const Held& held = held_[static_cast<std::size_t>(parameter)];
  const minihost::Value& standard = *info.defaultValue;
  const auto valid = [&](double value) { return std::clamp(value, info.validMin, info.validMax); };
  switch (info.type) {
    case PF_Param_SLIDER:
    case PF_Param_CHECKBOX:
      return valid(Whole(held.params[0], time, static_cast<int>(std::get<double>(standard))));
    case PF_Param_POPUP:
      return valid(Whole(held.params[0], time, static_cast<int>(std::get<double>(standard)) - 1) + 1.0);
    case PF_Param_COLOR: {
      const auto& color = std::get<minihost::Color>(standard);
      double rgb[] = {color.red / 255, color.green / 255, color.blue / 255};
      if (held.params[0] != nullptr) {
        suites_.parameter->paramGetValueAtTime(held.params[0], time, &rgb[0], &rgb[1], &rgb[2]);
      }
      const auto channel = [](double v) { return v > 0 ? std::min(v, 1.0) * 255 : 0.0; };
      return minihost::Color{channel(rgb[0]), channel(rgb[1]), channel(rgb[2])};
    }
    case PF_Param_POINT: {
      const auto& point = std::get<minihost::Point>(standard);
      const auto percent = [](double v) { return std::clamp(v, -kFarthestPercent, kFarthestPercent); };
      return minihost::Point{percent(Number(held.params[0], time, point.x)),
                             percent(Number(held.params[1], time, point.y))};
    }
    default:
      return valid(Number(held.params[0], time, std::get<double>(standard)));
  }
}

std::vector<double> HostParameters::KeyTimes(int parameter) const {
  const OfxParamHandle param = held_[static_cast<std::size_t>(parameter)].params.at(0);
  unsigned count = 0;
  std::vector<double> times;
  if (param == nullptr || suites_.parameter->paramGetNumKeys == nullptr ||
      suites_.parameter->paramGetNumKeys(param, &count) != kOk) {
    return times;
  }
  for (unsigned key = 0; key < count; ++key) {
    double time = 0;
    if (suites_.parameter->paramGetKeyTime(param, key, &time) == kOk) {
      times.push_back(time);
    }
  }
  return times;
}

void HostParameters::SetDisabled(int parameter, bool isDisabled) const {
  for (const OfxPropertySetHandle set : held_[static_cast<std::size_t>(parameter)].properties) {
    const Properties properties(suites_, set);
    const int enabled = isDisabled ? 0 : 1;
    if (properties.Int("OfxParamPropEnabled", 1) != enabled) {
      properties.SetInt("OfxParamPropEnabled", enabled);
    }
  }
}

}  // namespace openfx
