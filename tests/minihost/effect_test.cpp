#include "tests/minihost/fake_effect.h"

namespace minihost {
namespace {

using EffectTest = FakeEffectTest;

TEST_F(EffectTest, LearnsWhatTheSetUpSays) {
  On(PF_Cmd_GLOBAL_SETUP, [](Call& call) {
    call.out.my_version = (3u << 19) | (2u << 15) | (1u << 11) | (3u << 9) | 7;
    return PF_Err_NONE;
  });
  const auto effect = Make();
  const EffectVersion& v = effect->Version();
  EXPECT_EQ((std::array{v.version, v.subversion, v.fixLevel, v.stage, v.build}), (std::array{3, 2, 1, 3, 7}));
}

TEST_F(EffectTest, RefusesAnEffectWhoseSetUpFails) {
  const std::tuple<PF_Cmd, PF_Err (*)(Call&), const char*> cases[] = {
      {PF_Cmd_SEQUENCE_SETUP, [](Call&) { return 517; }, "517"},
      {PF_Cmd_PARAMS_SETUP, [](Call& c) { return c.out.num_params = 5, 0; }, "declared 1"},
      {PF_Cmd_PARAMS_SETUP, [](Call& c) { return c.in.utils->host_new_handle(8) ? 0 : 1; }, "kept handle"},
      {PF_Cmd_GLOBAL_SETUP, [](Call& c) { return std::strcpy(c.out.return_msg, "alas"), 77; }, "77: alas"}};
  for (const auto& [number, handler, message] : cases) {
    On(number, handler);
    EXPECT_THAT(ErrorOf([] { Instance instance(Make()); }), HasSubstr(message));
  }
  for (const char* path : {"libm.so.6", "/nowhere/effect.so", "/proc/self/status"}) {
    EXPECT_THAT(ErrorOf([&] { Effect::Load(path); }), HasSubstr(path));
  }
  EXPECT_NO_THROW(Effect::Load(VINTREL_MODULE));
}

TEST_F(EffectTest, SequenceDataStaysWithTheInstanceAndMovesBetweenCommands) {
  On(PF_Cmd_SEQUENCE_SETUP, [](Call& call) {
    call.out.sequence_data = call.in.utils->host_new_handle(1);
    *static_cast<char*>(*call.out.sequence_data) = 10;
    return PF_Err_NONE;
  });
  const void* place = nullptr;
  On(PF_Cmd_SEQUENCE_FLATTEN, [&](Call& call) {
    EXPECT_NE(std::exchange(place, *call.out.sequence_data), *call.out.sequence_data);
    return PF_Err{++*static_cast<char*>(*call.out.sequence_data)};
  });
  Instance first(Make()), second(Make());
  for (const int count : {11, 12, 13}) {
    EXPECT_EQ(first.Send(PF_Cmd_SEQUENCE_FLATTEN).err, count);
  }
  EXPECT_EQ(second.Send(PF_Cmd_SEQUENCE_FLATTEN).err, 11);
  ExpectClean(first);
  first.Close();
  EXPECT_THAT(first.HostLedger().Missing(), testing::ElementsAre("handle \"bytes\" 1"))
      << "beyond the set-down";
  EXPECT_THROW(first.Send(PF_Cmd_SEQUENCE_FLATTEN), std::logic_error);
}

TEST_F(EffectTest, LedgerNamesWhatIsNotBackAndEveryCallAgainstTheRules) {
  static PF_ParamDef def;
  static PF_EffectWorld world;
  static const void* suite;  // lent in the first case
  const std::pair<void (*)(Call&), const char*> cases[] = {
      {[](Call& c) { c.in.pica_basicP->AcquireSuite(kPFWorldSuite, 1, &suite); }, "suite"},
      {[](Call& c) {
         static_cast<const PF_WorldSuite1*>(suite)->new_world(c.in.effect_ref, 3, 3, 0, &world);
       },
       "world \"bytes a row\" 64"},
      {[](Call& c) { c.in.utils->host_new_handle(24); }, "handle \"bytes\" 24"},
      {[](Call& c) { c.in.inter.checkout_param(c.in.effect_ref, kCount, 0, 1, 30, &def); }, "parameter 4"},
      {[](Call& c) { c.in.pica_basicP->ReleaseSuite(kPFHandleSuite, 1); }, "PF Handle Suite"},
      {[](Call& c) { c.in.utils->host_dispose_handle(nullptr); }, "handle"},
      {[](Call& c) { c.in.inter.checkin_param(c.in.effect_ref, &def); }, "parameter"},
      {[](Call& c) { c.in.inter.add_param(c.in.effect_ref, -1, &def); }, "declared a parameter"},
      {[](Call& c) { c.in.inter.abort(&c); }, "effect reference"},
      {[](Call& c) { c.in.utils->fill(c.in.effect_ref, nullptr, nullptr, nullptr); }, "filled a world"}};
  for (const auto& [act, line] : cases) {
    On(PF_Cmd_SEQUENCE_FLATTEN, [&act = act](Call& call) { return act(call), PF_Err_NONE; });
    Instance instance(Make());
    instance.Send(PF_Cmd_SEQUENCE_FLATTEN);
    std::vector<std::string> lines = instance.HostLedger().Missing();
    std::ranges::copy(instance.HostLedger().Faults(), std::back_inserter(lines));
    EXPECT_THAT(lines, testing::ElementsAre(HasSubstr(line)));
  }
}

TEST_F(EffectTest, HostRefusesAndLacksWhatItIsToldTo) {
  Faults faults;
  faults.missingSuites = {{kPFWorldSuite, 2}};
  faults.refusals = {{Service::kNewHandle, 2}};
  On(PF_Cmd_SEQUENCE_FLATTEN, [](Call& c) {
    const void* suite = nullptr;
    EXPECT_NE(c.in.pica_basicP->AcquireSuite(kPFWorldSuite, 2, &suite), 0);
    const PF_Handle handle = c.in.utils->host_new_handle(4);
    EXPECT_EQ(c.in.utils->host_new_handle(4), nullptr);
    return c.in.utils->host_dispose_handle(handle), PF_Err_NONE;
  });
  Instance instance(Make());
  instance.SetFaults(faults);
  instance.Send(PF_Cmd_SEQUENCE_FLATTEN);
  ExpectClean(instance);
}

}  // namespace
}  // namespace minihost
