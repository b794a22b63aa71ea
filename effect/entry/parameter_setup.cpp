#include "effect/entry/parameter_setup.h"

#include <cstdint>

#include "effect/entry/parameter_table.h"

namespace {

constexpr float kCurveTolerance = 0.05f;

// 16.16 fixed point from a percentage.
PF_Fixed FixedPercent(double percent) {
  return static_cast<PF_Fixed>(percent * 65536.0);
}

void FillFloatSlider(const ParameterRow& row, PF_FloatSliderDef& slider) {
  slider.value = row.defaultValue;
  slider.dephault = static_cast<float>(row.defaultValue);
  slider.valid_min = static_cast<float>(row.valid.min);
  slider.valid_max = static_cast<float>(row.valid.max);
  slider.slider_min = static_cast<float>(row.slider.min);
  slider.slider_max = static_cast<float>(row.slider.max);
  slider.precision = static_cast<std::int16_t>(row.decimals);
  slider.curve_tolerance = kCurveTolerance;
}

void FillIntSlider(const ParameterRow& row, PF_SliderDef& slider) {
  slider.value = slider.dephault = static_cast<std::int32_t>(row.defaultValue);
  slider.valid_min = static_cast<std::int32_t>(row.valid.min);
  slider.valid_max = static_cast<std::int32_t>(row.valid.max);
  slider.slider_min = static_cast<std::int32_t>(row.slider.min);
  slider.slider_max = static_cast<std::int32_t>(row.slider.max);
}

void FillValue(const ParameterRow& row, PF_ParamDefUnion& u) {
  const auto choice = static_cast<std::int32_t>(row.defaultValue);
  switch (row.type) {
    case PF_Param_FLOAT_SLIDER:
      FillFloatSlider(row, u.fs_d);
      break;
    case PF_Param_SLIDER:
      FillIntSlider(row, u.sd);
      break;
    case PF_Param_CHECKBOX:
      u.bd.value = u.bd.dephault = choice;
      u.bd.u.nameptr = row.text;
      break;
    case PF_Param_POPUP:
      u.pd.value = u.pd.dephault = choice;
      u.pd.num_choices = row.choiceCount;
      u.pd.u.namesptr = row.text;
      break;
    case PF_Param_COLOR:
      u.cd.value = u.cd.dephault = row.defaultColor;
      break;
    case PF_Param_POINT:
      u.td.x_value = u.td.x_dephault = FixedPercent(row.defaultValue);
      u.td.y_value = u.td.y_dephault = FixedPercent(row.defaultValue);
      break;
    default:  // groups hold no value
      break;
  }
}

}  // namespace

PF_Err DeclareParameters(PF_InData* in_data, PF_OutData* out_data) {
  for (const ParameterRow& row : kParameters) {
    PF_ParamDef def = {};
    def.param_type = row.type;
    def.uu.id = row.id;
    def.flags = row.flags;
    if (row.type != PF_Param_GROUP_END) {
      in_data->utils->ansi.strcpy(def.name, row.name);
    }
    FillValue(row, def.u);
    constexpr std::int32_t kAppend = -1;
    if (const PF_Err error = in_data->inter.add_param(in_data->effect_ref, kAppend, &def);
        error != PF_Err_NONE) {
      return error;
    }
  }
  out_data->num_params = kParameterCount;
  return PF_Err_NONE;
}
