// How parameters are named and their values written.
#include <gmock/gmock.h>

#include "cli/scene/parameter_names.h"
#include "cli/scene/parameter_text.h"
#include "tests/support/cli/expect_error.h"
#include "tests/support/cli/scene_values.h"

namespace {

using cli::ExitCode;
using minihost::Color;
using minihost::ParameterInfo;
using minihost::Point;
using minihost::Value;

TEST(ParameterNames, FindByNameSlugAndGroup) {
  // The effect's, and two more that are called Amount.
  minihost::ParameterList list = *EffectParameters();
  const std::size_t added = list.size();
  for (const char* group : {"", "Light"}) {
    list.push_back(list[11]);
    list.back().group = group;
  }
  const cli::ParameterNames names(list);
  const struct {
    const char* text;
    std::size_t index;
  } cases[] = {{"Flakes", 1},
               {"fLAKES", 1},
               {"/flakes", 1},
               {"variation-size", 3},
               {"wiggle/amount", 11},
               {"Variation % (Size)", 3},
               {"/Amount", added},
               {"LIGHT / amount", added + 1},
               {"Stochastic Wiggle", 15},
               {"random_seed", 31}};
  for (const auto& [text, index] : cases) {
    EXPECT_EQ(&names.Find(text), &list[index]) << text;
  }
  for (const ParameterInfo& parameter : list) {
    if (!parameter.HasValue()) {
      continue;
    }
    EXPECT_EQ(&names.Find(names.SlugOf(parameter)), &parameter);
  }
  EXPECT_EQ(names.SlugOf(list[3]), "variation-size");
  EXPECT_EQ(names.SlugOf(list[11]), "wiggle/amount");

  const auto refused = [&](const char* text, const char* part) {
    ExpectError(ExitCode::kUsage, part, [&] { names.Find(text); });
  };
  refused("Flaks", "did you mean 'flakes'?");
  refused("wigle/amount", "did you mean 'wiggle/amount'?");
  refused("xyzzyxyzzy", "there is no parameter 'xyzzyxyzzy'; ");
  refused("", "there is no parameter ''; ");
  refused("Wiggle", "there is no parameter 'Wiggle'");
  refused("amount", "write 'wiggle/amount' or '/amount' or 'light/amount'");
}

TEST(ParameterText, ReadsValues) {
  const struct {
    const char* name;
    const char* text;
    Value value;
  } cases[] = {{"Flakes", "20000", 20000.0},
               {"Flakes", "2e6", 2e6},
               {"Variation % (Size)", " 12.5 % ", 12.5},
               {"Speed", "0.01", 0.01},
               {"Wind", "-10", -10.0},
               {"Stochastic Wiggle", "ON", 1.0},
               {"Stochastic Wiggle", "false", 0.0},
               {"Transfer Mode", "composite", 1.0},
               {"Transfer Mode", "2", 2.0},
               {"Color", "#ff8000", Color{255, 128, 0}},
               {"Color", "#F80", Color{255, 136, 0}},
               {"Color", "1, 2,255", Color{1, 2, 255}},
               {"Offset", "25%,-75.5%", Point{25, -75.5}},
               {"Random Seed", "42", 42.0}};
  const cli::ParameterNames names(*EffectParameters());
  for (const auto& [name, text, value] : cases) {
    EXPECT_EQ(cli::ParseValue(names.Find(name), text), value) << name << '=' << text;
  }
}

TEST(ParameterText, RefusesWithNameValueAndRange) {
  const struct {
    const char* name;
    const char* range;
    std::vector<const char*> texts;
  } cases[] = {
      {"Flakes", "0 to 2000000", {"", "-1", "2000001", "many", "1 2", "nan", "inf", "1e999", "5%", "0x10"}},
      {"Speed", "0.01 to 2000", {"0", "2000.01", "0.0099"}},
      {"Stochastic Wiggle", "on or off", {"", "2", "yes please"}},
      {"Transfer Mode", "Composite or Lighten", {"0", "3", "1.5", "Multiply"}},
      {"Color",
       "#rrggbb",
       {"", "#12", "#12345", "#-12345", "#1234567", "redd", "1,2,256", "1,2,3,4", "1,2,0.5"}},
      {"Offset", "x%,y% from -32767 to 32767", {"", "50", "50,", "1,2,3", "x,y", "1e9,0"}},
      {"Random Seed", "0 to 10000, whole", {"1.5", "-1", "10001"}}};
  const cli::ParameterNames names(*EffectParameters());
  for (const auto& [name, range, texts] : cases) {
    for (const char* text : texts) {
      ExpectError(ExitCode::kUsage, std::string(name) + ": '" + text + "' is not possible; it takes " + range,
                  [&, known = name] { cli::ParseValue(names.Find(known), text); });
    }
  }
  ParameterInfo held = names.Find("Offset");
  held.restrictedToLayer = true;
  EXPECT_EQ(cli::ParseValue(held, "0%,100%"), Value(Point{0, 100}));
  ExpectError(ExitCode::kUsage, "from 0 to 100", [&] { cli::ParseValue(held, "0,101"); });
}

}  // namespace
