// How parameters are named and their values written.
#include <gmock/gmock.h>

#include "cli/parameter_assignment.h"
#include "cli/parameter_names.h"
#include "cli/parameter_text.h"
#include "cli/params_command.h"
#include "tests/cli/expect_error.h"

namespace {

using cli::ExitCode;
using minihost::Color;
using minihost::ParameterInfo;
using minihost::Point;
using minihost::Value;

ParameterInfo Number(const char* name, const char* group, double low, double high, double value) {
  ParameterInfo info;
  info.type = PF_Param_FLOAT_SLIDER;
  info.name = name;
  info.group = group;
  info.validMin = low;
  info.validMax = high;
  info.decimals = 1;
  info.animatable = true;
  info.defaultValue = value;
  return info;
}

ParameterInfo Choice(PF_ParamType type, const char* name, const char* label, double high, double value) {
  ParameterInfo info = Number(name, "", type == PF_Param_POPUP ? 1 : 0, high, value);
  info.type = type;
  info.label = label;
  return info;
}

ParameterInfo Other(PF_ParamType type, const char* name, std::optional<Value> value) {
  ParameterInfo info;
  info.type = type;
  info.name = name;
  info.defaultValue = value;
  return info;
}

minihost::SharedParameterList MakeList() {
  auto list = std::make_shared<minihost::ParameterList>(minihost::ParameterList{
      Other(PF_Param_LAYER, "", {}),
      Number("Flakes", "", 0, 2e6, 10000),
      Number("Variation % (Size)", "", 0, 100, 25),
      Number("Speed", "", double{0.01f}, double{0.7f}, 0.5),
      Other(PF_Param_GROUP_START, "Wiggle", {}),
      Number("Amount", "Wiggle", 0, 1000, 20),
      Choice(PF_Param_CHECKBOX, "", "Stochastic Wiggle", 1, 1),
      Other(PF_Param_GROUP_END, "", {}),
      Number("Amount", "", -10, 10, 1),
      Number("Amount", "Light", 0, 10, 1),
      Choice(PF_Param_POPUP, "Transfer Mode", "", 2, 2),
      Other(PF_Param_COLOR, "Color", Color{255, 255, 255}),
      Other(PF_Param_POINT, "Offset", Point{50, 50}),
      Choice(PF_Param_SLIDER, "Random Seed", "", 10000, 0),
  });
  (*list)[6].animatable = false;
  (*list)[10].choices = {"Composite", "Lighten"};
  (*list)[13].decimals = 0;
  for (std::size_t i = 0; i < list->size(); ++i) (*list)[i].index = static_cast<int>(i);
  return list;
}

TEST(ParameterNames, FindByNameSlugAndGroup) {
  const auto list = MakeList();
  const cli::ParameterNames names(*list);
  const struct {
    const char* text;
    int index;
  } cases[] = {{"Flakes", 1},         {"fLAKES", 1},
               {"/flakes", 1},        {"Variation % (Size)", 2},
               {"variation-size", 2}, {"wiggle/amount", 5},
               {"Wiggle/Amount", 5},  {"LIGHT / amount", 9},
               {"/Amount", 8},        {"Stochastic Wiggle", 6},
               {"transfer-mode", 10}, {"random_seed", 13}};
  for (const auto& [text, index] : cases) EXPECT_EQ(names.Find(text).index, index) << text;

  for (const ParameterInfo& parameter : *list) {
    if (!parameter.HasValue()) continue;
    EXPECT_EQ(&names.Find(names.SlugOf(parameter)), &parameter);
  }
  EXPECT_EQ(names.SlugOf((*list)[2]), "variation-size");
  EXPECT_EQ(names.SlugOf((*list)[5]), "wiggle/amount");
}

TEST(ParameterNames, RefuseTheUnknownWithAHint) {
  const auto list = MakeList();
  const cli::ParameterNames names(*list);
  const auto refused = [&](const char* text, const char* part) {
    ExpectError(ExitCode::kUsage, part, [&] { names.Find(text); });
  };
  refused("Flaks", "did you mean 'flakes'?");
  refused("wigle/amount", "did you mean 'wiggle/amount'?");
  refused("transfer", "there is no parameter 'transfer'");
  refused("xyzzy", "there is no parameter 'xyzzy'; ");
  refused("", "there is no parameter ''; ");
  refused("Wiggle", "there is no parameter 'Wiggle'");
  refused("amount", "write 'wiggle/amount' or '/amount' or 'light/amount'");
}

TEST(ParameterText, ReadsValues) {
  const auto list = MakeList();
  const struct {
    std::size_t index;
    const char* text;
    Value value;
  } cases[] = {
      {1, "20000", 20000.0},
      {1, "2e6", 2e6},
      {2, "12.5", 12.5},
      {2, " 12.5 % ", 12.5},
      {3, "0.01", 0.01},
      {3, "0.7", double{0.7f}},
      {8, "-10", -10.0},
      {6, "ON", 1.0},
      {6, "false", 0.0},
      {6, "1", 1.0},
      {10, "composite", 1.0},
      {10, "2", 2.0},
      {11, "#ff8000", Color{255, 128, 0}},
      {11, "#F80", Color{255, 136, 0}},
      {11, "1, 2,255", Color{1, 2, 255}},
      {12, "25%,-75.5%", Point{25, -75.5}},
      {12, "0,100", Point{0, 100}},
      {13, "42", 42.0},
  };
  for (const auto& [index, text, value] : cases) {
    EXPECT_EQ(cli::ParseValue((*list)[index], text), value) << (*list)[index].DisplayName() << '=' << text;
  }
}

TEST(ParameterText, RefusesWithNameValueAndRange) {
  const auto list = MakeList();
  const struct {
    std::size_t index;
    const char* range;
    std::vector<const char*> texts;
  } cases[] = {
      {1, "0 to 2000000", {"", "-1", "2000001", "many", "1 2", "nan", "inf", "1e999", "5%", "0x10"}},
      {3, "0.01 to 0.7", {"0", "0.70001", "0.0099"}},
      {6, "on or off", {"", "2", "yes please"}},
      {10, "Composite or Lighten", {"0", "3", "1.5", "Multiply"}},
      {11,
       "#rrggbb",
       {"", "#12", "#12345", "#-12345", "#1234567", "red", "1,2", "1,2,256", "1,2,-1", "1,2,3,4", "1,2,0.5"}},
      {12, "x%,y%", {"", "50", "50,", "1,2,3", "x,y", "1e9,0"}},
      {13, "0 to 10000, whole", {"1.5", "-1", "10001"}},
  };
  for (const auto& [index, range, texts] : cases) {
    for (const char* text : texts) {
      SCOPED_TRACE(text);
      const ParameterInfo& parameter = (*list)[index];
      ExpectError(ExitCode::kUsage,
                  parameter.DisplayName() + ": '" + text + "' is not possible; it takes " + range,
                  [&] { cli::ParseValue(parameter, text); });
    }
  }
  ParameterInfo held = (*list)[12];
  held.restrictedToLayer = true;
  EXPECT_EQ(cli::ParseValue(held, "0%,100%"), Value(Point{0, 100}));
  ExpectError(ExitCode::kUsage, "from 0 to 100", [&] { cli::ParseValue(held, "0,101"); });
}

}  // namespace
