// The entry's own commands: the table, the about text, the global flags, the interface rule, the guard.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <new>
#include <stdexcept>

#include "tests/support/recording_host.h"

namespace {

TEST(Commands, OthersTouchNothing) {
  for (const PF_Cmd cmd : {INT_MIN, -24, -1, 2,  3,  6,  7,  9,  10,      12,        15,     16,
                           17,      18,  19, 20, 21, 22, 25, 26, 256 + 4, 65536 + 1, INT_MAX}) {
    RecordingHost host;
    std::memset(static_cast<void*>(&host.out), 0x5A, sizeof host.out);
    const PF_OutData before = host.out;
    EXPECT_EQ(host.Call(cmd), 0) << cmd;
    EXPECT_EQ(std::memcmp(&host.out, &before, sizeof before), 0) << cmd;
    EXPECT_EQ(host.Log(), "") << cmd;
    EXPECT_EQ(MainEntry(cmd, nullptr, nullptr, nullptr, nullptr, nullptr), 0) << cmd;
    host.out.sequence_data = nullptr;
  }
}

TEST(Commands, GlobalSetupKeepsTheHostsBits) {
  RecordingHost host;
  PF_OutData expected = host.out;
  host.out.out_flags = 0x11;
  host.out.out_flags2 = 0x808;
  host.out.my_version = 0xFFFFFFFF;
  expected.out_flags = 0x6000046 | 0x11;
  expected.out_flags2 = 0x1400 | 0x808;
  expected.my_version = 0x80600;
  EXPECT_EQ(host.Call(PF_Cmd_GLOBAL_SETUP), 0);
  EXPECT_EQ(std::memcmp(&host.out, &expected, sizeof expected), 0);
  EXPECT_EQ(host.Log(), "");
}

TEST(Commands, AboutTextGoesBeforeTheHostsAndIsCut) {
  const std::string about =
      "Kelmora 1.7.1\rVintrel, v1.0  (ELF x86-64)\r\r"
      "Simulates falling snow with depth, light simulation and motion blur.";
  for (const std::string& held :
       {std::string(), std::string("Registered to 100%s %n of us"), std::string(255 - about.size(), 'x'),
        std::string(256 - about.size(), 'y'), std::string(255, 'z')}) {
    RecordingHost host;
    std::memset(host.out.return_msg, 0x5A, sizeof host.out.return_msg);
    std::strcpy(host.out.return_msg, held.c_str());
    EXPECT_EQ(host.Call(PF_Cmd_ABOUT), 0);
    EXPECT_EQ(host.out.return_msg, (about + held).substr(0, 255));
    EXPECT_EQ(host.Log(), "sprintf %s\r%s, v%d.%d  (%s)\r%s%s\nsprintf %s\n");
  }
}

TEST(Commands, EmbedDepthIsGreyExactlyWithoutTheOriginal) {
  for (const PF_Cmd cmd : {PF_Cmd_USER_CHANGED_PARAM, PF_Cmd_UPDATE_PARAMS_UI})
    for (const int type : {0, 1, 4, 5, 6, 7, 10, 11, 12, 13, 14})
      for (const int composite : {0, 1, 2})
        for (const int held : {0, 0x20, 0x41, 0x61}) {
          SCOPED_TRACE(testing::Message() << cmd << ' ' << type << ' ' << composite << ' ' << held);
          RecordingHost host;
          host.params[26].u.bd.value = composite;
          host.params[30].param_type = type;
          host.params[30].ui_flags = held;
          host.params[30].flags = held & 0x41;
          host.params[30].u.fs_d.value = 42.5;
          PF_ParamDef expected = host.params[30];
          const PF_ParamDef before = expected;
          const bool hasTwirly = type == 1 || type == 10 || type >= 13;
          if (composite != 0) {
            expected.ui_flags &= ~0x20;
          } else {
            expected.ui_flags |= 0x20;
            if (hasTwirly) expected.flags |= 0x20;
          }
          host.Refuse("PF_UpdateParamUI", 19);
          EXPECT_EQ(host.Call(cmd), 19);
          EXPECT_EQ(std::memcmp(&host.updated, &expected, sizeof expected), 0);
          EXPECT_EQ(std::memcmp(&host.params[30], &before, sizeof before), 0);
          EXPECT_EQ(host.Log(),
                    "acquire PF Param Utils Suite 1\nPF_UpdateParamUI 30\nrelease PF Param Utils Suite 1\n");
          EXPECT_EQ(host.Outstanding(), "");
        }
}

TEST(Commands, WithoutItsSuiteACommandFails) {
  struct Row {
    PF_Cmd cmd;
    const char* suite;
  };
  for (const Row row : {Row{13, "PF Param Utils Suite 1"}, Row{14, "PF Param Utils Suite 1"},
                        Row{23, "PF Handle Suite 1"}, Row{11, "PF Sampling8 Suite 1"}})
    for (const PF_Err answer : {PF_Err{1}, RecordingHost::kNullSuite}) {
      RecordingHost host;
      host.Refuse(std::string("acquire ") + row.suite, answer);
      EXPECT_EQ(host.Call(row.cmd), 516) << row.cmd;
      EXPECT_EQ(host.Outstanding(), "") << row.cmd;
      EXPECT_FALSE(host.Called(std::string("release ") + row.suite)) << row.cmd;
    }
  for (const PF_Cmd cmd : {11, 13, 14, 23, 24}) {
    RecordingHost host;
    host.in.pica_basicP = nullptr;
    EXPECT_EQ(host.Call(cmd), 516) << cmd;
    EXPECT_EQ(host.Outstanding(), "") << cmd;
  }
}

// Everything is given back before the exception becomes a status, and no message is written.
TEST(Guard, TurnsExceptionsIntoStatuses) {
  struct Kind {
    std::function<PF_Err()> raise;
    PF_Err status;
  };
  const Kind kinds[] = {{[]() -> PF_Err { throw std::bad_alloc(); }, 4},
                        {[]() -> PF_Err { throw PF_Err{77}; }, 77},
                        {[]() -> PF_Err { throw std::runtime_error("any"); }, 516},
                        {[]() -> PF_Err { throw "text"; }, 516}};
  for (const Kind& kind : kinds) {
    for (const char* call : {"checkout_output", "acquire PF World Suite 2", "checkout 1 ", "checkout 28 ",
                             "util new_handle", "acquire PF Sampling8", "tan", "checkout 18", "checkout 5 ",
                             "abort", "new_world", "copy input[0 0 20 10]", "copy inputall",
                             "checkout 13 @250", "cos", "sample", "progress"}) {
      SCOPED_TRACE(call);
      RecordingHost host;
      host.OnCall(call, kind.raise);
      host.SetFloat(1, 400);           // enough flakes for a sample and a report
      host.params[15].u.bd.value = 0;  // wiggle by cosine
      EXPECT_EQ(host.SmartFrame(200), kind.status);
      EXPECT_EQ(host.Outstanding(), "");
      EXPECT_STREQ(host.out.return_msg, "");
    }
    for (const char* call : {"checkout_layer", "acquire", "new_handle"}) {
      SCOPED_TRACE(call);
      RecordingHost host;
      host.OnCall(call, kind.raise);
      EXPECT_EQ(host.Call(PF_Cmd_SMART_PRE_RENDER), kind.status);
      EXPECT_EQ(host.Outstanding(), "");
      EXPECT_EQ(host.preOutput.pre_render_data, nullptr);
    }
    RecordingHost host;
    host.OnCall("PF_UpdateParamUI", kind.raise);
    EXPECT_EQ(host.Call(PF_Cmd_UPDATE_PARAMS_UI), kind.status);
    EXPECT_EQ(host.Outstanding(), "");
    host.OnCall("add_param", kind.raise);
    EXPECT_EQ(host.Call(PF_Cmd_PARAMS_SETUP), kind.status);
  }
}

}  // namespace
