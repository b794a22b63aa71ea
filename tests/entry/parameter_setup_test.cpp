// What the effect declares, row by row, against a table of its own.
#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/recording_host.h"

namespace {

std::string Describe(const PF_ParamDef& def) {
  const PF_ParamType type = def.param_type;
  const PF_ParamDefUnion& u = def.u;
  std::ostringstream text;
  text << def.uu.id << " type " << type << " flags " << def.flags << ',' << def.ui_flags << " '" << def.name
       << "'";
  const auto range = [&](auto low, auto high) { text << ' ' << low << ".." << high; };
  const auto values = [&](auto... value) { ((text << ' ' << value), ...); };
  const auto slider = [&](const auto& s) {
    range(s.valid_min, s.valid_max);
    range(s.slider_min, s.slider_max);
    values('=', s.value, s.dephault);
  };
  const auto color = [&](PF_Pixel p) { values('=', int{p.alpha}, int{p.red}, int{p.green}, int{p.blue}); };
  if (type == PF_Param_SLIDER) {
    slider(u.sd);
  }
  if (type == PF_Param_FLOAT_SLIDER) {
    slider(u.fs_d);
    values("decimals", u.fs_d.precision, u.fs_d.curve_tolerance, u.fs_d.display_flags, u.fs_d.fs_flags);
  }
  if (type == PF_Param_CHECKBOX) {
    values(u.bd.u.nameptr, '=', u.bd.value, u.bd.dephault);
  }
  if (type == PF_Param_POPUP) {
    values(u.pd.num_choices, u.pd.u.namesptr, '=', u.pd.value, u.pd.dephault);
  }
  if (type == PF_Param_COLOR) {
    color(u.cd.value);
    color(u.cd.dephault);
  }
  if (type == PF_Param_POINT) {
    values('=', u.td.x_value, u.td.y_value, u.td.x_dephault, u.td.y_dephault, int{u.td.restrict_bounds});
  }
  return text.str();
}

constexpr const char* kRows[] = {
    "1 type 10 flags 32,0 'Flakes' 0..2e+06 0..50000 = 10000 10000 decimals 0 0.05 0 0",
    "2 type 10 flags 32,0 'Size' 0..15 0.5..6 = 3 3 decimals 2 0.05 0 0",
    "3 type 10 flags 34,0 'Variation % (Size)' 0..100 0..100 = 25 25 decimals 1 0.05 0 0",
    "4 type 10 flags 34,0 'Scene Depth' 100..50000 1000..10000 = 5000 5000 decimals 1 0.05 0 0",
    "5 type 10 flags 32,0 'Speed' 0.01..2000 100..800 = 250 250 decimals 1 0.05 0 0",
    "6 type 10 flags 34,0 'Variation % (Speed)' 0..100 0..100 = 50 50 decimals 1 0.05 0 0",
    "7 type 10 flags 32,0 'Wind' -10000..10000 -50..50 = 0 0 decimals 1 0.05 0 0",
    "8 type 10 flags 34,0 'Variation % (Wind)' 0..100 0..100 = 0 0 decimals 1 0.05 0 0",
    "9 type 10 flags 34,0 'Spread' 0..90 0..45 = 15 15 decimals 1 0.05 0 0",
    "10 type 13 flags 32,0 'Wiggle'",
    "11 type 10 flags 32,0 'Amount' 0..1000 0..100 = 20 20 decimals 1 0.05 0 0",
    "12 type 10 flags 34,0 'Variation % (Amount)' 0..100 0..100 = 0 0 decimals 1 0.05 0 0",
    "13 type 10 flags 34,0 'Frequency' 0..10 0.1..2 = 1 1 decimals 2 0.05 0 0",
    "14 type 10 flags 34,0 'Variation % (Frequency)' 0..100 0..100 = 75 75 decimals 1 0.05 0 0",
    "15 type 4 flags 34,0 '' Stochastic Wiggle = 1 1",
    "16 type 10 flags 32,0 'Flake Flatness %' 0..100 0..100 = 50 50 decimals 1 0.05 0 0",
    "17 type 14 flags 0,0 ''",
    "18 type 5 flags 0,0 'Color' = 255 255 255 255 = 255 255 255 255",
    "19 type 10 flags 32,0 'Opacity' 0..100 0..100 = 50 50 decimals 1 0.05 0 0",
    "20 type 13 flags 32,0 'Background Illumination'",
    "21 type 10 flags 32,0 'Influence %' 0..100 0..100 = 80 80 decimals 1 0.05 0 0",
    "22 type 10 flags 32,0 'Spread Width' 0..1000 0..400 = 150 150 decimals 1 0.05 0 0",
    "23 type 10 flags 32,0 'Spread Height' 0..1000 0..200 = 50 50 decimals 1 0.05 0 0",
    "24 type 14 flags 0,0 ''",
    "25 type 7 flags 0,0 'Transfer Mode' 2 Composite|Lighten = 2 2",
    "26 type 4 flags 0,0 '' Composite With Original = 1 1",
    "27 type 13 flags 32,0 'Extras'",
    "28 type 6 flags 0,0 'Offset' = 3276800 3276800 3276800 3276800 0",
    "29 type 10 flags 32,0 'Ground Level %' 0..100 0..100 = 100 100 decimals 1 0.05 0 0",
    "30 type 10 flags 32,0 'Embed Depth %' 0..100 0..100 = 100 100 decimals 1 0.05 0 0",
    "31 type 1 flags 32,0 'Random Seed' 0..10000 0..1000 = 0 0",
    "32 type 14 flags 0,0 ''",
};

TEST(ParameterSetup, DeclaresEveryRowInOrderUpToTheFirstRefusal) {
  for (int refused = 1; refused <= 33; ++refused) {
    RecordingHost host;
    host.params.clear();
    host.out.num_params = -7;
    host.Refuse("add_param -1 id " + std::to_string(refused), 100);
    EXPECT_EQ(host.Call(PF_Cmd_PARAMS_SETUP), refused < 33 ? 100 : 0);
    EXPECT_EQ(host.out.num_params, refused < 33 ? -7 : 33);
    std::string calls;
    for (int id = 1; id <= refused && id <= 32; ++id) {
      EXPECT_EQ(Describe(host.params[id]), kRows[id - 1]);
      calls += "add_param -1 id " + std::to_string(id) + "\n";
    }
    EXPECT_EQ(host.log, calls);
  }
}

}  // namespace
