// The suite cache and the pixel format of one command.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "effect/host/fxenv.h"
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
    acquired = host.log;
  }
  EXPECT_EQ(std::count(acquired.begin(), acquired.end(), '\n'), 98);
  EXPECT_EQ(host.log, acquired + std::regex_replace(acquired, std::regex("acquire"), "release"));
  EXPECT_THROW(AEGP_SuiteHandler(nullptr), PF_Err);
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
