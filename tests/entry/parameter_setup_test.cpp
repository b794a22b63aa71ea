// What the effect declares, row by row, against a table of its own.
#include <gtest/gtest.h>

#include <cstring>
#include <sstream>

#include "tests/support/recording_host.h"

namespace {

std::string Describe(const PF_ParamDef& def) {
  std::ostringstream text;
  text << def.uu.id << " type " << def.param_type << " flags 0x" << std::hex << def.flags << std::dec << " '"
       << def.name << "'";
  const auto range = [&](const char* name, auto low, auto high) { text << name << low << ".." << high; };
  if (def.param_type == PF_Param_FLOAT_SLIDER) {
    const PF_FloatSliderDef& slider = def.u.fs_d;
    range(" ", slider.valid_min, slider.valid_max);
    range(" ", slider.slider_min, slider.slider_max);
    text << " = " << slider.value << " decimals " << slider.precision;
    EXPECT_EQ(slider.dephault, static_cast<float>(slider.value)) << def.uu.id;
    EXPECT_EQ(slider.curve_tolerance, 0.05f) << def.uu.id;
    EXPECT_EQ(slider.display_flags, 0) << def.uu.id;
    EXPECT_EQ(slider.fs_flags, 0) << def.uu.id;
  } else if (def.param_type == PF_Param_SLIDER) {
    const PF_SliderDef& slider = def.u.sd;
    range(" ", slider.valid_min, slider.valid_max);
    range(" ", slider.slider_min, slider.slider_max);
    text << " = " << slider.value << ',' << slider.dephault << slider.value_str << slider.value_desc;
  } else if (def.param_type == PF_Param_CHECKBOX) {
    text << " [" << def.u.bd.u.nameptr << "] = " << def.u.bd.value << ',' << def.u.bd.dephault;
  } else if (def.param_type == PF_Param_POPUP) {
    const PF_PopupDef& popup = def.u.pd;
    text << ' ' << popup.num_choices << " [" << popup.u.namesptr << "] = " << popup.value << ','
         << popup.dephault;
  } else if (def.param_type == PF_Param_COLOR) {
    for (const PF_Pixel& p : {def.u.cd.value, def.u.cd.dephault})
      text << " = " << int{p.alpha} << ' ' << int{p.red} << ' ' << int{p.green} << ' ' << int{p.blue};
  } else if (def.param_type == PF_Param_POINT) {
    const PF_PointDef& point = def.u.td;
    text << " = " << point.x_value << ' ' << point.y_value << ' ' << point.x_dephault << ' '
         << point.y_dephault << " restrict " << int{point.restrict_bounds};
  }
  return text.str();
}

constexpr const char* kRows[] = {
    "1 type 10 flags 0x20 'Flakes' 0..2e+06 0..50000 = 10000 decimals 0",
    "2 type 10 flags 0x20 'Size' 0..15 0.5..6 = 3 decimals 2",
    "3 type 10 flags 0x22 'Variation % (Size)' 0..100 0..100 = 25 decimals 1",
    "4 type 10 flags 0x22 'Scene Depth' 100..50000 1000..10000 = 5000 decimals 1",
    "5 type 10 flags 0x20 'Speed' 0.01..2000 100..800 = 250 decimals 1",
    "6 type 10 flags 0x22 'Variation % (Speed)' 0..100 0..100 = 50 decimals 1",
    "7 type 10 flags 0x20 'Wind' -10000..10000 -50..50 = 0 decimals 1",
    "8 type 10 flags 0x22 'Variation % (Wind)' 0..100 0..100 = 0 decimals 1",
    "9 type 10 flags 0x22 'Spread' 0..90 0..45 = 15 decimals 1",
    "10 type 13 flags 0x20 'Wiggle'",
    "11 type 10 flags 0x20 'Amount' 0..1000 0..100 = 20 decimals 1",
    "12 type 10 flags 0x22 'Variation % (Amount)' 0..100 0..100 = 0 decimals 1",
    "13 type 10 flags 0x22 'Frequency' 0..10 0.1..2 = 1 decimals 2",
    "14 type 10 flags 0x22 'Variation % (Frequency)' 0..100 0..100 = 75 decimals 1",
    "15 type 4 flags 0x22 '' [Stochastic Wiggle] = 1,1",
    "16 type 10 flags 0x20 'Flake Flatness %' 0..100 0..100 = 50 decimals 1",
    "17 type 14 flags 0x0 ''",
    "18 type 5 flags 0x0 'Color' = 255 255 255 255 = 255 255 255 255",
    "19 type 10 flags 0x20 'Opacity' 0..100 0..100 = 50 decimals 1",
    "20 type 13 flags 0x20 'Background Illumination'",
    "21 type 10 flags 0x20 'Influence %' 0..100 0..100 = 80 decimals 1",
    "22 type 10 flags 0x20 'Spread Width' 0..1000 0..400 = 150 decimals 1",
    "23 type 10 flags 0x20 'Spread Height' 0..1000 0..200 = 50 decimals 1",
    "24 type 14 flags 0x0 ''",
    "25 type 7 flags 0x0 'Transfer Mode' 2 [Composite|Lighten] = 2,2",
    "26 type 4 flags 0x0 '' [Composite With Original] = 1,1",
    "27 type 13 flags 0x20 'Extras'",
    "28 type 6 flags 0x0 'Offset' = 3276800 3276800 3276800 3276800 restrict 0",
    "29 type 10 flags 0x20 'Ground Level %' 0..100 0..100 = 100 decimals 1",
    "30 type 10 flags 0x20 'Embed Depth %' 0..100 0..100 = 100 decimals 1",
    "31 type 1 flags 0x20 'Random Seed' 0..10000 0..1000 = 0,0",
    "32 type 14 flags 0x0 ''",
};

TEST(ParameterSetup, DeclaresEveryRowInOrder) {
  RecordingHost host;
  ASSERT_EQ(host.Call(PF_Cmd_PARAMS_SETUP), 0);
  EXPECT_EQ(host.out.num_params, 33);
  ASSERT_EQ(host.declared.size(), std::size(kRows));
  for (std::size_t i = 0; i < std::size(kRows); ++i) {
    const PF_ParamDef& def = host.declared[i];
    EXPECT_EQ(Describe(def), kRows[i]);
    EXPECT_EQ(def.ui_flags, 0) << kRows[i];
    EXPECT_TRUE(host.Called(std::string("strcpy ") + def.name) || def.name[0] == '\0') << kRows[i];
    // What a row does not use is zero to the record's end.
    const std::size_t used = std::strlen(def.name);
    for (std::size_t c = used; c < sizeof def.name; ++c) EXPECT_EQ(def.name[c], 0) << kRows[i];
    if (def.param_type >= PF_Param_GROUP_START) {
      const PF_ParamDefUnion none{};
      EXPECT_EQ(std::memcmp(&def.u, &none, sizeof none), 0) << kRows[i];
    }
  }
}

TEST(ParameterSetup, StopsAtTheFirstRefusal) {
  for (int row = 1; row <= 32; ++row) {
    RecordingHost host;
    host.out.num_params = -7;
    host.OnCall(
        "add_param", [row] { return 100 + row; }, row);
    EXPECT_EQ(host.Call(PF_Cmd_PARAMS_SETUP), 100 + row);
    EXPECT_EQ(host.out.num_params, -7) << row;
    EXPECT_EQ(host.LogOf("add_param").size(), static_cast<std::size_t>(row) * std::strlen("add_param -1\n"));
    EXPECT_EQ(host.declared.size(), static_cast<std::size_t>(row - 1));
  }
}

}  // namespace
