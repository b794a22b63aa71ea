#include <gmock/gmock.h>

#include <cstring>

#include "fake_effect.h"

namespace minihost {
namespace {

using testing::HasSubstr;

class EffectTest : public FakeEffectTest {};

TEST_F(EffectTest, LearnsWhatItsSetUpSaysAndSetsDownOnce) {
  int setdowns = 0;
  On(PF_Cmd_GLOBAL_SETDOWN, [&](Call&) { return ++setdowns, PF_Err_NONE; });
  On(PF_Cmd_GLOBAL_SETUP, [](Call& call) {
    call.out.my_version = (1u << 19) | (3u << 9);
    call.out.out_flags |= PF_OutFlag_NON_PARAM_VARY;
    call.out.out_flags2 |= PF_OutFlag2_SUPPORTS_SMART_RENDER;
    return PF_Err_NONE;
  });
  On(PF_Cmd_ABOUT, [](Call& call) {
    EXPECT_STREQ(call.out.return_msg, "");
    std::memset(call.out.return_msg, 'a', sizeof call.out.return_msg);  // without a closing zero
    call.out.return_msg[1] = '\r';
    return PF_Err_NONE;
  });
  {
    const auto effect = Make();
    EXPECT_EQ(effect->version().word, 0x80600u);
    EXPECT_EQ(effect->version().version, 1);
    EXPECT_EQ(effect->version().stage, 3);
    EXPECT_EQ(effect->flags(), PF_OutFlag_NON_PARAM_VARY);
    EXPECT_TRUE(effect->supportsSmartRender());
    EXPECT_EQ(effect->parameters()[kCount].name, "Count");
    EXPECT_EQ(effect->About(), "a\n" + std::string(254, 'a'));
    EXPECT_EQ(setdowns, 0);
  }
  EXPECT_EQ(setdowns, 1);
}

TEST_F(EffectTest, RefusesAnEffectWhoseSetUpFails) {
  On(PF_Cmd_GLOBAL_SETUP, [](Call& call) {
    std::strcpy(call.out.return_msg, "no licence");
    return PF_Err{77};
  });
  try {
    Make();
    ADD_FAILURE();
  } catch (const EffectError& error) {
    EXPECT_EQ(error.code(), 77);
    EXPECT_THAT(error.what(), HasSubstr("no licence"));
  }
  const std::pair<Handler, const char*> brokenSetups[] = {
      {[](Call& call) { return call.out.num_params = 5, PF_Err_NONE; }, "counts 5 parameters but declared 1"},
      {[](Call& call) {
         call.Acquire<void>(kPFHandleSuite, 1);
         return PF_Err_NONE;
       },
       "suite \"PF Handle Suite\" 1"},
      {[](Call& call) {
         PF_ParamDef definition = FakeDefinition(kAmount);
         return call.in.inter.add_param(call.in.effect_ref, 3, &definition);
       },
       "code 516"},
  };
  On(PF_Cmd_GLOBAL_SETUP, [](Call&) { return PF_Err_NONE; });
  for (const auto& [setup, message] : brokenSetups) {
    On(PF_Cmd_PARAMS_SETUP, setup);
    EXPECT_THAT(ErrorOf<EffectError>([] { Make(); }), HasSubstr(message));
  }
}

TEST_F(EffectTest, RefusesTheParameterItIsToldTo) {
  Faults faults;
  faults.refusals = {{Service::kAddParam, 3, 41}};
  EXPECT_THAT(ErrorOf<EffectError>([&] { Effect::Linked(Entry, faults); }), HasSubstr("code 41"));
}

TEST_F(EffectTest, LoadsModules) {
  const auto effect = Effect::Load(FAKE_MODULE);
  EXPECT_EQ(effect->About(), "a module\nof two lines");
  EXPECT_EQ(effect->parameters()[1].DisplayName(), "In The Module");
  const EffectVersion& version = effect->version();
  EXPECT_EQ(version.version, 3);
  EXPECT_EQ(version.subversion, 2);
  EXPECT_EQ(version.fixLevel, 1);
  EXPECT_EQ(version.build, 7);
  EXPECT_EQ(Instance(effect).Send(PF_Cmd_SEQUENCE_FLATTEN).err, PF_Err_NONE);

  for (const char* path : {"libm.so.6", "/nowhere/effect.so", "/proc/self/status"}) {
    EXPECT_THAT(ErrorOf<std::runtime_error>([&] { Effect::Load(path); }), HasSubstr(path));
  }
}

}  // namespace
}  // namespace minihost
