#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "fake_effect.h"
#include "minihost/parameter_set.h"

namespace minihost {
namespace {

using testing::HasSubstr;

std::vector<PF_ParamDef> Definitions() {
  std::vector<PF_ParamDef> definitions(1);
  for (int index = 1; index < kParameterCount; ++index) definitions.push_back(FakeDefinition(index));
  return definitions;
}

ParameterSet Defaults() {
  return ParameterSet(std::make_shared<const ParameterList>(LearnParameters(Definitions())));
}

TEST(ParameterTest, LearnsEveryKindFromItsDeclaration) {
  const ParameterList list = LearnParameters(Definitions());
  ASSERT_EQ(list.size(), std::size_t{kParameterCount});
  for (const ParameterInfo& info : list) {
    EXPECT_EQ(info.id, info.index == 0 ? 0 : info.index + 100);
    EXPECT_EQ(info.group, info.index == kSwitch || info.index == kCount ? "Group" : "") << info.index;
    const bool mark = info.index == 0 || info.index == kGroup || info.index == kGroupEnd;
    EXPECT_EQ(info.HasValue(), !mark) << info.index;
    EXPECT_EQ(info.animatable, !mark && info.index != kFixed) << info.index;
    EXPECT_EQ(info.collapsed, info.index == kAmount) << info.index;
  }
  const ParameterInfo& amount = list[kAmount];
  EXPECT_EQ(amount.validMin, 0.1) << "the decimal number, not the float beside it";
  EXPECT_EQ(amount.validMax, 200);
  EXPECT_EQ(amount.sliderMin, 1);
  EXPECT_EQ(amount.sliderMax, 50);
  EXPECT_EQ(amount.decimals, 2);
  EXPECT_EQ(amount.defaultValue, Value(2.5));
  EXPECT_EQ(list[kSwitch].DisplayName(), "Switch");
  EXPECT_EQ(list[kSwitch].defaultValue, Value(1.0));
  EXPECT_EQ(list[kTint].defaultValue, Value(Color{10, 20, 30}));
  EXPECT_EQ(list[kCentre].defaultValue, Value(Point{50, 50}));
  EXPECT_THAT(list[kMode].choices, testing::ElementsAre("Plain", "Light"));
  EXPECT_EQ(list[kMode].validMax, 2);
  EXPECT_EQ(FindParameter(list, "Switch"), &list[kSwitch]);
  EXPECT_EQ(FindParameter(list, "Group"), nullptr) << "a group mark holds no value";
}

TEST(ParameterTest, RefusesDeclarationsThatMakeNoSense) {
  const struct {
    int index;
    void (*spoil)(PF_ParamDef&);
    const char* message;
  } cases[] = {
      {kAmount, [](PF_ParamDef& def) { std::memset(def.name, 'x', sizeof def.name); }, "closing zero"},
      {kAmount, [](PF_ParamDef& def) { def.param_type = 99; }, "type 99"},
      {kAmount, [](PF_ParamDef& def) { def.u.fs_d.valid_max = -1; }, "valid range"},
      {kAmount, [](PF_ParamDef& def) { def.u.fs_d.slider_min = NAN; }, "slider range"},
      {kAmount, [](PF_ParamDef& def) { def.u.fs_d.dephault = 201; }, "default 201"},
      {kMode, [](PF_ParamDef& def) { def.u.pd.num_choices = 3; }, "3 choices"},
      {kMode, [](PF_ParamDef& def) { def.u.pd.u.namesptr = nullptr; }, "no names"},
      {kMode, [](PF_ParamDef& def) { def.u.pd.dephault = 0; }, "default 0"},
      {kGroup, [](PF_ParamDef& def) { def.param_type = PF_Param_LAYER; }, "never started"},
      {kGroupEnd, [](PF_ParamDef& def) { def.param_type = PF_Param_LAYER; }, "never ended"},
  };
  for (const auto& [index, spoil, message] : cases) {
    std::vector<PF_ParamDef> definitions = Definitions();
    spoil(definitions[static_cast<std::size_t>(index)]);
    EXPECT_THAT(ErrorOf([&] { LearnParameters(definitions); }), HasSubstr(message));
  }
}

TEST(ParameterTest, HoldsTracksAndRoundsWhereTheTypeIsWhole) {
  ParameterSet set = Defaults();
  EXPECT_EQ(set.At(kCount, 12), Value(7.0));
  set.Set(kAmount, Track(0.1));
  set.Set("Count", Track({{0, 0.0}, {10, 5.0}}));
  EXPECT_EQ(set.At(kCount, 3.2), Value(2.0)) << "1.6, rounded";
  set.Set("Mode", Track({{0, 1.0, Ease::kLinear}, {10, 2.0, Ease::kSmooth}}));
  EXPECT_EQ(set.At(kMode, 9.9), Value(1.0)) << "there is nothing between two choices";
  EXPECT_EQ(set.At(kMode, 10), Value(2.0));
  ParameterSet copy = set;
  copy.Set(kAmount, Track(3.0));
  EXPECT_EQ(set.At(kAmount, 0), Value(0.1));
}

TEST(ParameterTest, RefusalsNameParameterValueAndLimit) {
  ParameterSet set = Defaults();
  const struct {
    int index;
    Track track;
    std::vector<const char*> parts;
  } cases[] = {
      {kAmount, Track(200.5), {"\"Amount\"", "200.5", "0.1..200"}},
      {kAmount, Track({{0, 5.0}, {1, 0.0}}), {"\"Amount\"", " 0 ", "0.1..200"}},
      {kAmount, Track(Point{}), {"\"Amount\"", "a number", "a point"}},
      {kFixed, Track({{0, 5.0}, {1, 6.0}}), {"\"Fixed\"", "animated", "2 keys"}},
      {kCount, Track(1.5), {"\"Count\"", "1.5", "whole"}},
      {kMode, Track(3.0), {"\"Mode\"", "3", "1..2"}},
      {kSwitch, Track(2.0), {"\"Switch\"", "2", "0..1"}},
      {kTint, Track(Color{0, 0, 256}), {"\"Tint\"", "blue", "256", "0..255"}},
      {kGroup, Track(1.0), {"\"Group\"", "no value"}},
      {0, Track(1.0), {"parameter 0", "no value"}},
      {kParameterCount, Track(1.0), {"10", "0..9"}},
      {-1, Track(1.0), {"-1", "0..9"}},
  };
  for (const auto& c : cases) {
    const std::string text = ErrorOf([&] { set.Set(c.index, c.track); });
    for (const char* part : c.parts) EXPECT_THAT(text, HasSubstr(part));
  }
  EXPECT_EQ(set.At(kAmount, 1), Value(2.5)) << "a refused track changes nothing";
  EXPECT_THAT(ErrorOf([&] { set.Set("Nothing", Track(1.0)); }), HasSubstr("\"Nothing\""));

  std::vector<PF_ParamDef> definitions = Definitions();
  definitions[kCentre].u.td.restrict_bounds = 1;
  ParameterSet bound(std::make_shared<const ParameterList>(LearnParameters(definitions)));
  EXPECT_THAT(ErrorOf([&] {
                bound.Set(kCentre, Track(Point{50, 101}));
              }),
              HasSubstr("101 is outside 0..100"));
  set.Set(kCentre, Track(Point{50, 101}));
}

}  // namespace
}  // namespace minihost
