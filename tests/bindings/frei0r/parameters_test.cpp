// From settings of 0 to 1 to the values of the effect.
#include "bindings/frei0r/parameters.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "bindings/frei0r/snow.h"

namespace {

using frei0r::DefaultOf;
using frei0r::FramesPerSecondOf;
using frei0r::NumberOf;
using frei0r::Parameter;
using Kind = frei0r::Parameter::Kind;

const Parameter& Named(const std::string& name) {
  for (const Parameter& parameter : frei0r::TheEffect().parameters) {
    if (parameter.name == name) {
      return parameter;
    }
  }
  throw std::invalid_argument(name);
}

TEST(Parameters, DefaultsAreTheEffectsOwn) {
  for (const Parameter& parameter : frei0r::TheEffect().parameters) {
    if (parameter.info == nullptr) {
      EXPECT_EQ(DefaultOf(parameter)[0], 0) << parameter.name;
    } else if (parameter.kind == Kind::kColor) {
      EXPECT_EQ(minihost::Value(frei0r::ColorOf(DefaultOf(parameter))), *parameter.info->defaultValue);
    } else if (parameter.kind != Kind::kPointX && parameter.kind != Kind::kPointY) {
      EXPECT_EQ(minihost::Value(NumberOf(parameter, DefaultOf(parameter)[0])), *parameter.info->defaultValue)
          << parameter.name;
      EXPECT_EQ(NumberOf(parameter, std::nan("")), NumberOf(parameter, DefaultOf(parameter)[0]));
    }
    EXPECT_NE(parameter.explanation, "") << parameter.name;
  }
}

TEST(Parameters, RunOverTheSliderAndUpToTheValidRange) {
  struct Case {
    const char* name;
    double setting;
    double value;
  };
  const double inf = std::numeric_limits<double>::infinity();
  for (const Case& c : {Case{"Speed", 0, 100},
                        {"Speed", 0.5, 450},
                        {"Speed", 1, 800},
                        {"Speed", 2, 1500},
                        {"Speed", inf, 2000},
                        {"Speed", -1, 0.01},
                        {"Wind", 0.6, 10},
                        {"Size", 0.709090909090909, 4.4},
                        {"Random Seed", 0.0774, 77},
                        {"Random Seed", 99, 10000},
                        {"Transfer Mode", 0.49, 1},
                        {"Transfer Mode", 0.5, 2},
                        {"Transfer Mode", 1, 2},
                        {"Transfer Mode", -inf, 1},
                        {"Stochastic Wiggle", 0.49, 0},
                        {"Stochastic Wiggle", 0.5, 1},
                        {"Offset X", 0.3, 30},
                        {"Offset Y", -0.5, -50},
                        {"Offset Y", inf, 10000}}) {
    EXPECT_EQ(NumberOf(Named(c.name), c.setting), c.value) << c.name << " at " << c.setting;
  }
  EXPECT_EQ(frei0r::ColorOf({0.2, 2.0, -1.0}), (minihost::Color{51, 255, 0}));
  EXPECT_EQ(FramesPerSecondOf(0.25), 25);
  EXPECT_EQ(FramesPerSecondOf(23.976), 23.976);
  EXPECT_EQ(FramesPerSecondOf(std::nan("")), 0);
}

}  // namespace
