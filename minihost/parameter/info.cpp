#include "minihost/parameter/info.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace minihost {
namespace {

constexpr double kFixedOne = 65536.0;

[[noreturn]] void Refuse(const ParameterInfo& info, const std::string& why) {
  throw std::invalid_argument("parameter " + std::to_string(info.index) + " \"" + info.DisplayName() +
                              "\": " + why);
}

std::string NameOf(const ParameterInfo& info, const PF_ParamDef& definition) {
  const void* end = std::memchr(definition.name, 0, sizeof definition.name);
  if (end == nullptr) {
    Refuse(info, "its name has no closing zero within " + std::to_string(sizeof definition.name) + " bytes");
  }
  return definition.name;
}

double Exactly(std::int32_t value) noexcept {
  return value;
}

// The shortest decimal number that the float stands for: a limit declared as 0.1f must admit an entered 0.1,
// which is a little less than the float.
double Exactly(float value) noexcept {
  if (!std::isfinite(value)) {
    return value;
  }
  char digits[64];
  const std::to_chars_result written = std::to_chars(digits, digits + sizeof digits, value);
  double decimal = 0;
  std::from_chars(digits, written.ptr, decimal);
  return decimal;
}

template <class Slider>
void LearnSlider(const Slider& slider, ParameterInfo& info) {
  info.validMin = Exactly(slider.valid_min);
  info.validMax = Exactly(slider.valid_max);
  info.sliderMin = Exactly(slider.slider_min);
  info.sliderMax = Exactly(slider.slider_max);
  info.defaultValue = Exactly(slider.dephault);
}

std::vector<std::string> SplitChoices(const char* names) {
  std::vector<std::string> choices(1);
  for (const char* c = names; *c != 0; ++c) {
    if (*c == '|') {
      choices.emplace_back();
    } else {
      choices.back() += *c;
    }
  }
  return choices;
}

void LearnPopup(const PF_PopupDef& popup, ParameterInfo& info) {
  if (popup.u.namesptr == nullptr) {
    Refuse(info, "its choices have no names");
  }
  info.choices = SplitChoices(popup.u.namesptr);
  if (std::ssize(info.choices) != popup.num_choices) {
    Refuse(info, "it counts " + std::to_string(popup.num_choices) + " choices but names " +
                     std::to_string(info.choices.size()));
  }
  info.validMin = 1;
  info.validMax = popup.num_choices;
  info.defaultValue = static_cast<double>(popup.dephault);
}

void LearnCheckBox(const PF_CheckBoxDef& box, ParameterInfo& info) {
  if (box.u.nameptr != nullptr) {
    info.label = box.u.nameptr;
  }
  info.validMax = 1;
  info.defaultValue = box.dephault != 0 ? 1.0 : 0.0;
}

void LearnPoint(const PF_PointDef& point, ParameterInfo& info) {
  info.restrictedToLayer = point.restrict_bounds != 0;
  info.defaultValue = Point{point.x_dephault / kFixedOne, point.y_dephault / kFixedOne};
}

void LearnValue(const PF_ParamDef& definition, ParameterInfo& info) {
  switch (definition.param_type) {
    case PF_Param_SLIDER:
      return LearnSlider(definition.u.sd, info);
    case PF_Param_FLOAT_SLIDER:
      info.decimals = definition.u.fs_d.precision;
      return LearnSlider(definition.u.fs_d, info);
    case PF_Param_CHECKBOX:
      return LearnCheckBox(definition.u.bd, info);
    case PF_Param_POPUP:
      return LearnPopup(definition.u.pd, info);
    case PF_Param_COLOR: {
      const PF_Pixel& color = definition.u.cd.dephault;
      info.defaultValue = Color{double(color.red), double(color.green), double(color.blue)};
      return;
    }
    case PF_Param_POINT:
      return LearnPoint(definition.u.td, info);
    case PF_Param_LAYER:
    case PF_Param_GROUP_START:
    case PF_Param_GROUP_END:
      return;
    default:
      Refuse(info, "type " + std::to_string(definition.param_type) + " is unknown");
  }
}

// Comparisons are written so that a NaN fails them.
void RequireSaneRange(const ParameterInfo& info) {
  if (!info.HasValue() || !std::holds_alternative<double>(*info.defaultValue)) {
    return;
  }
  const auto ordered = [](double low, double high) {
    return std::isfinite(low) && std::isfinite(high) && low <= high;
  };
  if (!ordered(info.validMin, info.validMax)) {
    Refuse(info, "its valid range is empty or not finite");
  }
  if (!ordered(info.sliderMin, info.sliderMax)) {
    Refuse(info, "its slider range is empty or not finite");
  }
  const double value = std::get<double>(*info.defaultValue);
  if (!(value >= info.validMin && value <= info.validMax)) {
    Refuse(info, "its default " + std::to_string(value) + " is outside " + std::to_string(info.validMin) +
                     ".." + std::to_string(info.validMax));
  }
}

}  // namespace

const ParameterInfo* FindParameter(const ParameterList& list, std::string_view displayName) noexcept {
  const auto found = std::find_if(list.begin(), list.end(), [displayName](const ParameterInfo& info) {
    return info.HasValue() && info.DisplayName() == displayName;
  });
  return found == list.end() ? nullptr : &*found;
}

ParameterList LearnParameters(const std::vector<PF_ParamDef>& definitions) {
  ParameterList list;
  std::vector<std::string> openGroups;
  for (const PF_ParamDef& definition : definitions) {
    ParameterInfo info;
    info.index = static_cast<int>(list.size());
    info.id = definition.uu.id;
    info.type = definition.param_type;
    info.flags = definition.flags;
    info.name = NameOf(info, definition);
    info.collapsed = (definition.flags & PF_ParamFlag_COLLAPSE_TWIRLY) != 0;
    LearnValue(definition, info);
    info.animatable = info.HasValue() && (definition.flags & PF_ParamFlag_CANNOT_TIME_VARY) == 0;
    RequireSaneRange(info);

    if (info.type == PF_Param_GROUP_END) {
      if (openGroups.empty()) {
        Refuse(info, "it ends a group that was never started");
      }
      openGroups.pop_back();
    }
    if (!openGroups.empty()) {
      info.group = openGroups.back();
    }
    if (info.type == PF_Param_GROUP_START) {
      openGroups.push_back(info.name);
    }
    list.push_back(std::move(info));
  }
  if (!openGroups.empty()) {
    throw std::invalid_argument("the parameter group \"" + openGroups.back() + "\" is never ended");
  }
  return list;
}

}  // namespace minihost
