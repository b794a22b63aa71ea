#include <cmath>

#include "tests/minihost/fake_effect.h"

namespace minihost {
namespace {

TEST(TrackTest, EasesLeadFromKeyToKeyAndTheEndsHold) {
  const Track track({{4, 30.0, Ease::kSmooth}, {-2, 10.0}, {8.5, -6.0, Ease::kHold}, {10, 1.0}});
  const double expected[][2] = {{-1e9, 10}, {-2, 10},  {-0.5, 15}, {4, 30}, {5.125, 24.375},
                                {8.5, -6},  {9.9, -6}, {10, 1},    {11, 1}};
  for (const auto& [frame, value] : expected) {
    EXPECT_DOUBLE_EQ(std::get<double>(track.At(frame)), value) << frame;
  }
  EXPECT_EQ(Track({{0, Color{0, 100, 200}}, {10, Color{100, 0, 250}}}).At(5), Value(Color{50, 50, 225}));
}

TEST(ParameterTest, LearnsEveryKindFromItsDeclaration) {
  const ParameterList list = LearnParameters(FakeDefinitions());
  for (const ParameterInfo& info : list) {
    const bool mark = info.index == 0 || info.index == kGroup || info.index == kGroupEnd;
    EXPECT_EQ(info.HasValue(), !mark) << info.index;
    EXPECT_EQ(info.group, info.index == kSwitch || info.index == kCount ? "Group" : "") << info.index;
  }
  EXPECT_EQ(list[kAmount].validMin, 0.1) << "the decimal number, not the float beside it";
  EXPECT_EQ(list[kTint].defaultValue, Value(Color{10, 20, 30}));
  EXPECT_THAT(list[kMode].choices, testing::ElementsAre("Plain", "Light"));
}

TEST(ParameterTest, HoldsTracksAndNamesWhatItRefuses) {
  ParameterSet set(std::make_shared<const ParameterList>(LearnParameters(FakeDefinitions())));
  set.Set("Count", Track({{0, 0.0}, {10, 5.0}}));
  EXPECT_EQ(set.At(kCount, 3.2), Value(2.0)) << "1.6, rounded";
  set.Set("Switch", Track({{0, 0.0}, {10, 1.0, Ease::kSmooth}}));
  EXPECT_EQ(set.At(kSwitch, 9.9), Value(0.0)) << "there is nothing between off and on";

  std::vector<PF_ParamDef> definitions = FakeDefinitions();
  definitions[kAmount].u.fs_d.dephault = 201;
  EXPECT_THAT(ErrorOf([&] { LearnParameters(definitions); }), HasSubstr("default 201"));
  const std::tuple<int, std::vector<Key>, const char*> tracks[] = {
      {kAmount, {}, "without keys"},
      {kTint, {{0, Color{0, INFINITY, 0}}}, "not finite"},
      {kAmount, {{7.5, 1.0}, {2, 1.0}, {7.5, 2.0}}, "frame 7.5"},
      {kAmount, {{0, 5.0}, {1, 200.5}}, "\"Amount\": value 200.5 is outside 0.1..200"},
      {kAmount, {{0, Point{}}}, "takes a number, not a point"},
      {kMode, {{0, 1.0}, {1, 2.0}}, "2 keys"},
      {kCount, {{0, 1.5}}, "1.5 is not a whole number"},
      {kParameterCount, {{0, 1.0}}, "9 is outside 0..8"}};
  for (const auto& [index, keys, message] : tracks) {
    EXPECT_THAT(ErrorOf([&, &index = index, &keys = keys] { set.Set(index, Track(keys)); }),
                HasSubstr(message));
  }
  EXPECT_EQ(set.At(kAmount, 1), Value(2.5)) << "a refused track changes nothing";
}

}  // namespace
}  // namespace minihost
