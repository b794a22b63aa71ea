#include "effect/host/parameter_readers.h"

#include <cstddef>

#include "effect/entry/parameter_table.h"

namespace {

constexpr double kFixedToDouble = 1.52587890625e-05;  // 1 / 65536

// The parameter's row, or an empty one for an index that was never declared.
ParameterRow DeclaredRow(int index) {
  if (index < 1 || index >= kParameterCount) {
    return {};
  }
  return kParameters[static_cast<std::size_t>(index) - 1];
}

// Checks the parameter out, takes its value with `read`, and checks it in again; `fallback` makes the value
// from the declaration where the host refuses.
template <class Read, class Fallback>
auto ReadParameter(PF_InData* in_data, int index, std::int32_t time, std::int32_t time_step,
                   std::uint32_t time_scale, Read read, Fallback fallback) -> decltype(read(PF_ParamDef())) {
  PF_ParamDef def = {};
  const PF_InteractCallbacks& inter = in_data->inter;
  if (inter.checkout_param(in_data->effect_ref, index, time, time_step, time_scale, &def) != PF_Err_NONE) {
    return fallback(DeclaredRow(index));
  }
  const auto value = read(def);
  inter.checkin_param(in_data->effect_ref, &def);
  return value;
}

std::int32_t DefaultInteger(const ParameterRow& row) {
  return static_cast<std::int32_t>(row.defaultValue);
}

PF_Pixel Opaque(PF_Pixel color) {
  color.alpha = 255;
  return color;
}

}  // namespace

double Get_Float_Slider(PF_InData* in_data, int index, std::int32_t time, std::int32_t time_step,
                        std::uint32_t time_scale) {
  return ReadParameter(
      in_data, index, time, time_step, time_scale, [](const PF_ParamDef& def) { return def.u.fs_d.value; },
      [](const ParameterRow& row) { return row.defaultValue; });
}

std::int32_t Get_Int_Slider(PF_InData* in_data, int index, std::int32_t time, std::int32_t time_step,
                            std::uint32_t time_scale) {
  return ReadParameter(
      in_data, index, time, time_step, time_scale, [](const PF_ParamDef& def) { return def.u.sd.value; },
      DefaultInteger);
}

std::int32_t Get_PopUp(PF_InData* in_data, int index, std::int32_t time, std::int32_t time_step,
                       std::uint32_t time_scale) {
  return ReadParameter(
      in_data, index, time, time_step, time_scale, [](const PF_ParamDef& def) { return def.u.pd.value; },
      DefaultInteger);
}

bool Get_Checkbox(PF_InData* in_data, int index, std::int32_t time, std::int32_t time_step,
                  std::uint32_t time_scale) {
  return ReadParameter(
      in_data, index, time, time_step, time_scale, [](const PF_ParamDef& def) { return def.u.bd.value != 0; },
      [](const ParameterRow& row) { return row.defaultValue != 0.0; });
}

PF_Pixel Get_Color(PF_InData* in_data, int index, std::int32_t time, std::int32_t time_step,
                   std::uint32_t time_scale) {
  return ReadParameter(
      in_data, index, time, time_step, time_scale,
      [](const PF_ParamDef& def) { return Opaque(def.u.cd.value); },
      [](const ParameterRow& row) { return Opaque(row.defaultColor); });
}

DoublePoint Get_Point(PF_InData* in_data, int index, std::int32_t time, std::int32_t time_step,
                      std::uint32_t time_scale) {
  return ReadParameter(
      in_data, index, time, time_step, time_scale,
      [](const PF_ParamDef& def) {
        return DoublePoint{static_cast<double>(def.u.td.x_value) * kFixedToDouble,
                           static_cast<double>(def.u.td.y_value) * kFixedToDouble};
      },
      [](const ParameterRow& row) {
        return DoublePoint{row.defaultValue, row.defaultValue};
      });
}
