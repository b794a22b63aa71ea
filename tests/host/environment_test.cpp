// The suite cache, the pixel format and the temporary world of one command.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <regex>
#include <tuple>

#include "effect/host/new_world.h"
#include "tests/support/recording_host.h"

namespace {

TEST(SuiteCache, AcquiresEverySlotOnceAndGivesItBackOnce) {
  RecordingHost host;
  std::string acquired;
  {
    const AEGP_SuiteHandler suites(host.in.pica_basicP);
    for (int round = 0; round < 2; ++round) {
      for (std::size_t slot = 0; slot < 98; ++slot) {
        EXPECT_NE(suites.Suite(slot), nullptr);
      }
    }
    EXPECT_THROW(suites.Suite(98), PF_Err);
    acquired = host.log;
  }
  EXPECT_EQ(std::count(acquired.begin(), acquired.end(), '\n'), 98);
  EXPECT_EQ(host.log, acquired + std::regex_replace(acquired, std::regex("acquire"), "release"));
  EXPECT_THROW(AEGP_SuiteHandler(nullptr), PF_Err);
}

// Every suite is lent as this table of functions.
void (*lent[4])();

TEST(SuiteCache, RefusesATableThatLacksAFunctionOfThoseNeeded) {
  using Suites = AEGP_SuiteHandler;
  const std::pair<std::function<void(const Suites&)>, std::string_view> rows[] = {
      {&Suites::HandleSuite1, "1101"},       {&Suites::WorldSuite1, "1100"},
      {&Suites::WorldSuite2, "1100"},        {&Suites::ParamUtilsSuite1, "1000"},
      {&Suites::Sampling8Suite1, "0100"},    {&Suites::Sampling16Suite1, "0100"},
      {&Suites::SamplingFloatSuite1, "0100"}};
  const SPBasicSuite basic = {[](const char*, std::int32_t, const void** suite) -> std::int32_t {
                                *suite = lent;
                                return 0;
                              },
                              [](const char*, std::int32_t) -> std::int32_t { return 0; }};
  for (const auto& [ask, needed] : rows) {
    for (std::size_t missing = 0; missing < needed.size(); ++missing) {
      std::fill(std::begin(lent), std::end(lent), [] {});
      lent[missing] = nullptr;
      const AEGP_SuiteHandler suites(&basic);
      if (needed[missing] == '1') {
        EXPECT_THROW(ask(suites), PF_Err) << needed << ", " << missing;
      } else {
        EXPECT_NO_THROW(ask(suites)) << needed << ", " << missing;
      }
    }
  }
}

TEST(NewWorld, GivesBackWhatItHoldsBeforeItTakesAnother) {
  const std::tuple<PF_PixelFormat, std::string, std::string, std::string> rows[] = {
      {PF_PixelFormat_ARGB32, "new_world 4x3 flags 1\n", "new_world 5x2 flags 0\n", "dispose_world\n"},
      {PF_PixelFormat_ARGB64, "new_world 4x3 flags 3\n", "new_world 5x2 flags 2\n", "dispose_world\n"},
      {PF_PixelFormat_ARGB128, "PF_NewWorld 4x3 clear 1 format 842229089\n",
       "PF_NewWorld 5x2 clear 0 format 842229089\n", "PF_DisposeWorld\n"},
  };
  for (const auto& [format, first, second, disposed] : rows) {
    RecordingHost host;
    Fxenv env(&host.in, &host.out, nullptr, nullptr);
    FX_NewWorld world(env);
    EXPECT_EQ(world.Layer(), nullptr);
    EXPECT_EQ(world.New(4, 3, format, true), 0);
    EXPECT_EQ(world.New(5, 2, format, false), 0);
    EXPECT_EQ(world.Layer()->width, 5);
    EXPECT_TRUE(host.log.ends_with(first + disposed + second)) << host.log;
    host.Refuse(disposed.substr(0, disposed.size() - 1), 9);
    EXPECT_EQ(world.New(6, 1, format, false), 9);
    EXPECT_EQ(world.Layer(), nullptr);
    EXPECT_TRUE(host.log.ends_with(second + disposed)) << host.log;
  }
}

TEST(PixelFormat, IsAskedOnceAndJudgedByFlagsWithoutTheSuite) {
  const std::string asked = "acquire PF World Suite 2\nPF_GetPixelFormat output\nrelease PF World Suite 2\n";
  for (const PF_Err refusal : {PF_Err{0}, PF_Err{3}, RecordingHost::kNullSuite}) {
    for (const int flags : {0, 1, 2, 3}) {
      RecordingHost host;
      host.format = 0x12345678;
      host.output.world_flags = flags;
      host.Refuse("acquire PF World Suite 2", refusal);
      Fxenv env(&host.in, &host.out, nullptr, nullptr);
      EXPECT_EQ(env.PixelFormat(), 0x66646162);
      EXPECT_EQ(host.log, "");
      env.output = &host.output;
      const PF_PixelFormat byFlags = (flags & 1) != 0 ? 0x36316561 : 0x62677261;
      for (int call = 0; call < 2; ++call) {
        EXPECT_EQ(env.PixelFormat(), refusal == 0 ? 0x12345678 : byFlags) << flags;
      }
      EXPECT_EQ(host.log, refusal == 0 ? asked : "acquire PF World Suite 2\n");
    }
  }
}

}  // namespace
