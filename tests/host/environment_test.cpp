// The suite cache, the pixel format and the temporary world of one command.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "effect/host/fxenv.h"
#include "effect/host/new_world.h"
#include "tests/support/recording_host.h"

namespace {

// Name, then the versions that have a slot.
constexpr const char* kSuites =
    "AEGP Keyframe Suite:1,2,3,4;AEGP Stream Suite:4,7,8;AEGP Marker Suite:1;AEGP Comp Suite:4,9,11,14;"
    "AEGP Proj Suite:2,5,7;AEGP Layer Suite:5,8,10,11;AEGP Dynamic Stream Suite:2,3;AEGP Canvas Suite:10,11;"
    "AEGP Camera Suite:2;AEGP Register Suite:1,2;AEGP Memory Suite:1;AEGP Item Suite:3,7,10,11;"
    "AEGP Light Suite:1,2;AEGP Effect Suite:1,2,3;AEGP Layer Mask Suite:2,5;AEGP Mask Outline Suite:2,3;"
    "AEGP Footage Suite:7,10;AEGP Command Suite:1;AEGP Utility Suite:1,2,3,7,10,11;PF ANSI Suite:1;"
    "PF Handle Suite:1;PF Fill Matte Suite:1;PF World Transform Suite:1;AEGP QueryXform Suite:4;"
    "AEGP Composite Suite:2;PF World Suite:1,2;AEGP PF Interface Suite:1;PF Path Query Suite:1;"
    "PF Path Data Suite:1;PF Param Utils Suite:1;PF AE App Suite:2,5;PF AE Adv App Suite:1,2;"
    "AEGP IO In Suite:1;AEGP IO Out Suite:1,6;AEGP Persistent Data Suite:1;AEGP Render Queue Suite:1;"
    "AEGP Render Queue Item Suite:3,4;AEGP Output Module Suite:1,2;AEGP File Import Manager Suite:2;"
    "PF Sampling8 Suite:1;PF Sampling16 Suite:1;PF Iterate8 Suite:1;PF iterate16 Suite:1;"
    "PF iterateFloat Suite:1;AEGP Collection Suite:1,2;AEGP Text Document Suite:1;AEGP Sound Data Suite:1;"
    "AEGP Text Layer Suite:1;AEGP Artisan Util Suite:1;AEGP World Suite:2;AEGP Render Options Suite:1,2;"
    "AEGP Tracker Suite:1;AEGP Tracker Utility Suite:1;AE Plugin Helper Suite2:2;PF Color Settings Suite:1,3;"
    "PF AE Adv Item Suite:1;PF ColorParamSuite:1;PF SamplingFloat Suite:1;PF Effect UI Suite:1;";

TEST(SuiteCache, HasASlotForEverySuiteAndGivesEachBackOnce) {
  std::multiset<std::string> wanted, acquired, released;
  std::string name, version;
  bool inName = true;
  for (const char* c = kSuites; *c != '\0'; ++c) {
    if (*c == ':') {
      inName = false;
    } else if (*c == ',' || *c == ';') {
      wanted.insert(name + ' ' + version);
      version.clear();
      if (*c == ';') name.clear(), inName = true;
    } else {
      (inName ? name : version) += *c;
    }
  }
  ASSERT_EQ(wanted.size(), 98u);
  RecordingHost host;
  host.everySuite = true;
  {
    const AEGP_SuiteHandler suites(host.in.pica_basicP);
    EXPECT_EQ(host.Log(), "");
    for (int round = 0; round < 2; ++round)
      for (std::size_t slot = 0; slot < 98; ++slot) EXPECT_NE(suites.Suite(slot), nullptr);
  }
  std::istringstream log(host.Log());
  for (std::string line; std::getline(log, line);)
    (line[0] == 'a' ? acquired : released).insert(line.substr(8));
  EXPECT_EQ(acquired, wanted);
  EXPECT_EQ(released, wanted);
}

TEST(SuiteCache, NamedSuitesAreTheirOwn) {
  RecordingHost host;
  {
    const AEGP_SuiteHandler suites(host.in.pica_basicP);
    suites.HandleSuite1(), suites.WorldSuite1(), suites.WorldSuite2(), suites.ParamUtilsSuite1();
    suites.Sampling8Suite1(), suites.Sampling16Suite1(), suites.SamplingFloatSuite1(), suites.WorldSuite2();
    EXPECT_EQ(host.Log(),
              "acquire PF Handle Suite 1\nacquire PF World Suite 1\nacquire PF World Suite 2\n"
              "acquire PF Param Utils Suite 1\nacquire PF Sampling8 Suite 1\nacquire PF Sampling16 Suite 1\n"
              "acquire PF SamplingFloat Suite 1\n");
    EXPECT_THROW(suites.LoadSuite("PF world Suite", 1), PF_Err);
    EXPECT_THROW(suites.LoadSuite("PF World Suite", 3), PF_Err);
  }
  EXPECT_EQ(host.Outstanding(), "");
  host.ForgetCalls();
  { const AEGP_SuiteHandler unused(host.in.pica_basicP); }
  EXPECT_EQ(host.Log(), "");
  try {
    const AEGP_SuiteHandler none(nullptr);
    ADD_FAILURE() << "built without a basic suite";
  } catch (PF_Err status) {
    EXPECT_EQ(status, 516);
  }
}

TEST(PixelFormat, IsAskedOnceAndJudgedByFlagsWithoutTheSuite) {
  const std::string asked = "acquire PF World Suite 2\nPF_GetPixelFormat output\nrelease PF World Suite 2\n";
  RecordingHost host;
  for (const PF_PixelFormat format : {0x62677261, 0x36316561, 0x32336561, 0x12345678}) {
    host.SetImages(format, 4, 4);
    host.ForgetCalls();
    Fxenv env(&host.in, &host.out, nullptr, nullptr);
    EXPECT_EQ(env.PixelFormat(), 0x66646162);
    EXPECT_EQ(env.PixelFormat(), 0x66646162);
    EXPECT_EQ(host.Log(), "");
    EXPECT_TRUE(env.input == nullptr && env.smartExtra == nullptr);
    env.output = &host.output;
    EXPECT_EQ(env.PixelFormat(), format);
    EXPECT_EQ(env.PixelFormat(), format);
    EXPECT_EQ(host.Log(), asked);
  }
  for (const PF_Err answer : {PF_Err{3}, RecordingHost::kNullSuite})
    for (const int flags : {0, 1, 2, 3}) {
      RecordingHost without;
      without.Refuse("acquire PF World Suite 2", answer);
      without.output.world_flags = flags;
      Fxenv env(&without.in, &without.out, nullptr, &without.output);
      EXPECT_EQ(env.PixelFormat(), (flags & 1) != 0 ? 0x36316561 : 0x62677261);
      EXPECT_EQ(without.Log(), "acquire PF World Suite 2\n");
    }
  RecordingHost silent;
  silent.Refuse("PF_GetPixelFormat", 9);
  EXPECT_EQ(silent.PlainFrame(0), 516);
  EXPECT_EQ(silent.Log(), asked);
}

TEST(NewWorld, AsksTheSuiteOfItsFormatAndGivesBackOnce) {
  struct Row {
    PF_PixelFormat format;
    bool clear;
    const char* made;
    const char* disposed;
  };
  for (const Row& row :
       {Row{0x62677261, false, "new_world 7x5 flags 0\n", "dispose_world "},
        Row{0x62677261, true, "new_world 7x5 flags 1\n", "dispose_world "},
        Row{0x36316561, false, "new_world 7x5 flags 2\n", "dispose_world "},
        Row{0x36316561, true, "new_world 7x5 flags 3\n", "dispose_world "},
        Row{0x66646162, false, "new_world 7x5 flags 0\n", "dispose_world "},
        Row{0x32336561, false, "PF_NewWorld 7x5 clear 0 format 842229089\n", "PF_DisposeWorld "},
        Row{0x32336561, true, "PF_NewWorld 7x5 clear 1 format 842229089\n", "PF_DisposeWorld "}}) {
    SCOPED_TRACE(row.made);
    RecordingHost host;
    const std::string made = row.made, disposed = row.disposed;
    {
      Fxenv env(&host.in, &host.out, nullptr, nullptr);
      FX_NewWorld world(env);
      EXPECT_EQ(world.Layer(), nullptr);
      EXPECT_EQ(world.Dispose(), 0);
      EXPECT_EQ(host.Log(), "");
      EXPECT_EQ(world.New(7, 5, row.format, row.clear), 0);
      host.ForgetCalls();
      EXPECT_EQ(world.New(7, 5, row.format, row.clear), 0);
      EXPECT_EQ(host.Log(), disposed + "world1\n" + made);
      ASSERT_NE(world.Layer(), nullptr);
      world.Layer()->data = nullptr;
      EXPECT_EQ(world.Layer(), nullptr);  // held, but without pixels
      EXPECT_EQ(world.Dispose(), 0);
      host.ForgetCalls();
      EXPECT_EQ(world.Dispose(), 0);
      EXPECT_EQ(host.Log(), "");
      // Another format in between: each world goes back to the suite that made it.
      const bool isFloat = row.format == PF_PixelFormat_ARGB128;
      EXPECT_EQ(world.New(2, 2, isFloat ? PF_PixelFormat_ARGB32 : PF_PixelFormat_ARGB128, false), 0);
      EXPECT_EQ(world.New(7, 5, row.format, row.clear), 0);
      EXPECT_TRUE(host.Called(isFloat ? "dispose_world world3" : "PF_DisposeWorld world3"));
      // A refused disposal counts as done, and nothing new is asked for.
      host.Refuse(disposed, 33);
      host.ForgetCalls();
      EXPECT_EQ(world.New(7, 5, row.format, row.clear), 33);
      EXPECT_EQ(host.Log(), disposed + "world4\n");
      EXPECT_EQ(world.Layer(), nullptr);
      host.Refuse(made.substr(0, made.find(' ')), 44);
      EXPECT_EQ(world.New(7, 5, row.format, row.clear), 44);
      EXPECT_EQ(world.Layer(), nullptr);
      EXPECT_EQ(world.Dispose(), 0);
    }
    EXPECT_EQ(host.Outstanding(), "");
  }
}

}  // namespace
