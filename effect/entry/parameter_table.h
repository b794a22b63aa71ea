// The effect's parameters: order, names, ranges and defaults, as one table checked when it is compiled.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "effect/host/parameter_index.h"
#include "hostapi/params.h"

struct ValueRange {
  double min;
  double max;
};

/// One row.  Fields that a type has no use for stay zero.
struct ParameterRow {
  PF_ParamType type;
  ParameterIndex id;
  const char* name = "";
  PF_ParamFlags flags = 0;
  ValueRange valid = {};
  ValueRange slider = {};
  double defaultValue = 0.0;  // sliders: the value; checkbox: 0 or 1; popup: the choice; point: percent on
                              // both axes
  PF_Pixel defaultColor = {};
  int decimals = 0;
  int choiceCount = 0;
  const char* text = "";  // a checkbox's label, a popup's choices
};

namespace parameter_rows {

inline constexpr PF_ParamFlags kClosed = PF_ParamFlag_COLLAPSE_TWIRLY;
inline constexpr PF_ParamFlags kClosedFixed = PF_ParamFlag_COLLAPSE_TWIRLY | PF_ParamFlag_CANNOT_TIME_VARY;

constexpr ParameterRow FloatSlider(ParameterIndex id, const char* name, PF_ParamFlags flags, ValueRange valid,
                                   ValueRange slider, double defaultValue, int decimals) {
  return {PF_Param_FLOAT_SLIDER, id, name, flags, valid, slider, defaultValue, {}, decimals};
}

constexpr ParameterRow Percent(ParameterIndex id, const char* name, PF_ParamFlags flags,
                               double defaultValue) {
  return FloatSlider(id, name, flags, {0, 100}, {0, 100}, defaultValue, 1);
}

constexpr ParameterRow IntSlider(ParameterIndex id, const char* name, PF_ParamFlags flags, ValueRange valid,
                                 ValueRange slider, int defaultValue) {
  return {PF_Param_SLIDER, id, name, flags, valid, slider, static_cast<double>(defaultValue)};
}

constexpr ParameterRow Checkbox(ParameterIndex id, const char* label, PF_ParamFlags flags, bool defaultOn) {
  return {PF_Param_CHECKBOX, id, "", flags, {}, {}, defaultOn ? 1.0 : 0.0, {}, 0, 0, label};
}

constexpr ParameterRow Popup(ParameterIndex id, const char* name, const char* choices, int choiceCount,
                             int defaultChoice) {
  return {PF_Param_POPUP, id,     name, 0, {}, {}, static_cast<double>(defaultChoice), {}, 0,
          choiceCount,    choices};
}

constexpr ParameterRow Color(ParameterIndex id, const char* name, PF_Pixel defaultColor) {
  return {PF_Param_COLOR, id, name, 0, {}, {}, 0.0, defaultColor};
}

constexpr ParameterRow Point(ParameterIndex id, const char* name, double defaultPercent) {
  return {PF_Param_POINT, id, name, 0, {}, {}, defaultPercent};
}

constexpr ParameterRow GroupStart(ParameterIndex id, const char* name) {
  return {PF_Param_GROUP_START, id, name, kClosed};
}

constexpr ParameterRow GroupEnd(ParameterIndex id) {
  return {PF_Param_GROUP_END, id};
}

}  // namespace parameter_rows

/// Every declared parameter in order; row i has index i + 1.
inline constexpr std::array kParameters = [] {
  using namespace parameter_rows;
  return std::array{
      FloatSlider(kFlakes, "Flakes", kClosed, {0, 2'000'000}, {0, 50'000}, 10'000, 0),
      FloatSlider(kSize, "Size", kClosed, {0, 15}, {0.5, 6}, 3, 2),
      Percent(kSizeVariation, "Variation % (Size)", kClosedFixed, 25),
      FloatSlider(kSceneDepth, "Scene Depth", kClosedFixed, {100, 50'000}, {1'000, 10'000}, 5'000, 1),
      FloatSlider(kSpeed, "Speed", kClosed, {0.01, 2'000}, {100, 800}, 250, 1),
      Percent(kSpeedVariation, "Variation % (Speed)", kClosedFixed, 50),
      FloatSlider(kWind, "Wind", kClosed, {-10'000, 10'000}, {-50, 50}, 0, 1),
      Percent(kWindVariation, "Variation % (Wind)", kClosedFixed, 0),
      FloatSlider(kSpread, "Spread", kClosedFixed, {0, 90}, {0, 45}, 15, 1),
      GroupStart(kWiggleGroup, "Wiggle"),
      FloatSlider(kAmount, "Amount", kClosed, {0, 1'000}, {0, 100}, 20, 1),
      Percent(kAmountVariation, "Variation % (Amount)", kClosedFixed, 0),
      FloatSlider(kFrequency, "Frequency", kClosedFixed, {0, 10}, {0.1, 2}, 1, 2),
      Percent(kFrequencyVariation, "Variation % (Frequency)", kClosedFixed, 75),
      Checkbox(kStochasticWiggle, "Stochastic Wiggle", kClosedFixed, true),
      Percent(kFlakeFlatness, "Flake Flatness %", kClosed, 50),
      GroupEnd(kWiggleGroupEnd),
      Color(kColor, "Color", {255, 255, 255, 255}),
      Percent(kOpacity, "Opacity", kClosed, 50),
      GroupStart(kIlluminationGroup, "Background Illumination"),
      Percent(kInfluence, "Influence %", kClosed, 80),
      FloatSlider(kSpreadWidth, "Spread Width", kClosed, {0, 1'000}, {0, 400}, 150, 1),
      FloatSlider(kSpreadHeight, "Spread Height", kClosed, {0, 1'000}, {0, 200}, 50, 1),
      GroupEnd(kIlluminationGroupEnd),
      Popup(kTransferMode, "Transfer Mode", "Composite|Lighten", 2, kTransferLighten),
      Checkbox(kCompositeWithOriginal, "Composite With Original", 0, true),
      GroupStart(kExtrasGroup, "Extras"),
      Point(kOffset, "Offset", 50),
      Percent(kGroundLevel, "Ground Level %", kClosed, 100),
      Percent(kEmbedDepth, "Embed Depth %", kClosed, 100),
      IntSlider(kRandomSeed, "Random Seed", kClosed, {0, 10'000}, {0, 1'000}, 0),
      GroupEnd(kExtrasGroupEnd),
  };
}();

static_assert(
    [] {
      for (std::size_t i = 0; i < kParameters.size(); ++i) {
        const ParameterRow& row = kParameters[i];
        const bool inRange = row.slider.min == row.slider.max ||
                             (row.slider.min <= row.defaultValue && row.defaultValue <= row.slider.max &&
                              row.valid.min <= row.slider.min && row.slider.max <= row.valid.max);
        if (row.id != static_cast<int>(i) + 1 || !inRange || std::string_view(row.name).size() > 31) {
          return false;
        }
      }
      return kParameters.size() + 1 == kParameterCount;
    }(),
    "ids count up from one, names fit the host's record, sliders lie in their range and defaults on them");
