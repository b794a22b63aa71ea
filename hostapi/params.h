// Parameter definitions: what the effect declares once, and what a check-out hands back with a value in it.
#pragma once

#include <cstdint>

#include "hostapi/types.h"
#include "hostapi/worlds.h"

using PF_ParamType = std::int32_t;
inline constexpr PF_ParamType PF_Param_LAYER = 0;
inline constexpr PF_ParamType PF_Param_SLIDER = 1;
inline constexpr PF_ParamType PF_Param_CHECKBOX = 4;
inline constexpr PF_ParamType PF_Param_COLOR = 5;
inline constexpr PF_ParamType PF_Param_POINT = 6;
inline constexpr PF_ParamType PF_Param_POPUP = 7;
inline constexpr PF_ParamType PF_Param_FLOAT_SLIDER = 10;
inline constexpr PF_ParamType PF_Param_ARBITRARY_DATA = 11;
inline constexpr PF_ParamType PF_Param_PATH = 12;
inline constexpr PF_ParamType PF_Param_GROUP_START = 13;
inline constexpr PF_ParamType PF_Param_GROUP_END = 14;

using PF_ParamFlags = std::int32_t;
inline constexpr PF_ParamFlags PF_ParamFlag_CANNOT_TIME_VARY = 0x02;  // cannot be keyframed
inline constexpr PF_ParamFlags PF_ParamFlag_COLLAPSE_TWIRLY = 0x20;   // its disclosure triangle starts closed

using PF_ParamUIFlags = std::int32_t;
inline constexpr PF_ParamUIFlags PF_PUI_DISABLED = 0x20;  // shown greyed out

/// Ranges are inclusive.  "valid" bounds what may be entered, "slider" bounds the slider's travel.
struct PF_SliderDef {
  std::int32_t value;
  char value_str[32];
  char value_desc[32];
  std::int32_t valid_min;
  std::int32_t valid_max;
  std::int32_t slider_min;
  std::int32_t slider_max;
  std::int32_t dephault;
};

struct PF_FloatSliderDef {
  double value;
  float valid_min;
  float valid_max;
  float slider_min;
  float slider_max;
  float dephault;
  float curve_tolerance;       // how closely the host's curve display follows the value
  std::int16_t precision;      // decimals shown
  std::int16_t display_flags;  // 0: the host adds no percent sign
  std::int32_t fs_flags;       // 0: no phase
};

struct PF_CheckBoxDef {
  std::int32_t value;  // 0 off, anything else on
  std::int32_t dephault;
  union {
    const char* nameptr;  // the text beside the box; lent by the effect for as long as it is loaded
  } u;
};

struct PF_PopupDef {
  std::int32_t value;  // choices count from 1
  std::int32_t num_choices;
  std::int32_t dephault;
  union {
    const char* namesptr;  // the choices, "|" between them; lent by the effect for as long as it is loaded
  } u;
};

struct PF_ColorDef {
  PF_Pixel value;
  PF_Pixel dephault;
};

/// Declared as percentages of the layer's width and height; checked out as pixels of the current render
/// (downsampled, from the layer's top-left corner).
struct PF_PointDef {
  PF_Fixed x_value;
  PF_Fixed y_value;
  PF_Fixed x_dephault;
  PF_Fixed y_dephault;
  PF_Boolean restrict_bounds;  // whether the point must stay on the layer
};

union PF_ParamDefUnion {
  PF_LayerDef ld;
  PF_SliderDef sd;
  PF_FloatSliderDef fs_d;
  PF_CheckBoxDef bd;
  PF_ColorDef cd;
  PF_PointDef td;
  PF_PopupDef pd;
};

/// One parameter.  `param_type` says which member of `u` holds.
struct PF_ParamDef {
  union {
    std::int32_t id;  // chosen by the effect, stable between its versions
  } uu;
  PF_ParamUIFlags ui_flags;
  PF_ParamType param_type;
  char name[32];  // at most 31 characters and a zero
  PF_ParamFlags flags;
  PF_ParamDefUnion u;
};
