// The entry's own commands: the table, the about text, the global flags, the interface rule, the guard.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <new>

#include "tests/support/recording_host.h"

namespace {

TEST(Commands, OthersTouchNothing) {
  for (const PF_Cmd cmd : {INT_MIN, -1, 2, 3, 6, 7, 9, 10, 12, 15, 16, 22, 25, 256 + 4, 65536 + 1, INT_MAX}) {
    RecordingHost host;
    const PF_OutData before = host.out;
    EXPECT_EQ(host.Call(cmd), 0) << cmd;
    EXPECT_EQ(std::memcmp(&host.out, &before, sizeof before), 0) << cmd;
    EXPECT_EQ(host.log, "") << cmd;
    EXPECT_EQ(MainEntry(cmd, nullptr, nullptr, nullptr, nullptr, nullptr), 0) << cmd;
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
}

TEST(Commands, SequenceRecordIsMadeOnceAndFreedOnceWithHandlesOrWithout) {
  for (const bool withHandles : {true, false}) {
    RecordingHost host;
    if (!withHandles) {
      host.utils.host_new_handle = nullptr, host.utils.host_dispose_handle = nullptr;
    }
    EXPECT_EQ(host.Call(PF_Cmd_SEQUENCE_SETDOWN), 0);
    EXPECT_EQ(host.Call(PF_Cmd_SEQUENCE_SETUP), 0);
    const std::string empty = "\xFF\xFF\xFF\xFF" + std::string(24, '\0');
    EXPECT_EQ(std::memcmp(*host.out.sequence_data, empty.data(), 28), 0);
    std::memset(*host.out.sequence_data, 0x33, 28);
    EXPECT_EQ(host.Call(PF_Cmd_SEQUENCE_SETUP), 0);
    EXPECT_EQ(*static_cast<char*>(*host.out.sequence_data), 0x33);
    EXPECT_EQ(host.Frame(PF_Cmd_SMART_RENDER, 0), 0);
    EXPECT_EQ(host.Frame(PF_Cmd_SEQUENCE_SETDOWN, 0), 0);
    EXPECT_EQ(host.log, withHandles ? "util dispose\n" : "");
    EXPECT_EQ(host.out.sequence_data, nullptr);
    EXPECT_EQ(host.Outstanding(), "");
  }
}

TEST(Commands, AboutTextGoesBeforeTheHostsAndIsCut) {
  const std::string about =
      "Kelmora 1.7.1\rVintrel, v1.0  (ELF x86-64)\r\r"
      "Simulates falling snow with depth, light simulation and motion blur.";
  for (const std::string& held :
       {std::string(), std::string("Registered to 100%s %n of us"), std::string(255 - about.size(), 'x'),
        std::string(256 - about.size(), 'y'), std::string(256, 'z')}) {
    RecordingHost host;
    std::memcpy(host.out.return_msg, held.data(), held.size());
    EXPECT_EQ(host.Call(PF_Cmd_ABOUT), 0);
    EXPECT_EQ(host.out.return_msg, (about + held).substr(0, 255));
  }
}

TEST(Commands, EmbedDepthIsGreyExactlyWithoutTheOriginal) {
  for (const PF_Cmd cmd : {PF_Cmd_USER_CHANGED_PARAM, PF_Cmd_UPDATE_PARAMS_UI}) {
    for (const int type : {0, 1, 4, 5, 6, 7, 10, 11, 12, 13, 14}) {
      for (const int composite : {0, 1, 2}) {
        RecordingHost host;
        host.params[26].u.bd.value = composite;
        PF_ParamDef& held = host.params[30];
        held.param_type = type;
        held.flags = 0x41;
        held.ui_flags = composite != 0 ? 0x61 : 0x41;
        PF_ParamDef expected = held;
        const bool hasTwirly = type == 1 || type == 10 || type >= 13;
        expected.ui_flags ^= 0x20;
        if (composite == 0 && hasTwirly) {
          expected.flags |= 0x20;
        }
        host.Refuse("PF_UpdateParamUI 30", 19);
        EXPECT_EQ(host.Call(cmd), 19);
        EXPECT_EQ(std::memcmp(&host.updated, &expected, sizeof expected), 0) << type << ' ' << composite;
        EXPECT_EQ(held.ui_flags, composite != 0 ? 0x61 : 0x41);
        EXPECT_EQ(host.Outstanding(), "");
      }
    }
  }
}

// Everything is given back before the exception becomes a status, and no message is written.
TEST(Guard, TurnsExceptionsIntoStatuses) {
  const std::pair<std::function<PF_Err()>, PF_Err> kinds[] = {{[]() -> PF_Err { throw std::bad_alloc(); }, 4},
                                                              {[]() -> PF_Err { throw PF_Err{77}; }, 77},
                                                              {[]() -> PF_Err { throw "text"; }, 516}};
  const std::pair<PF_Cmd, std::vector<std::string>> commands[] = {
      {4, {"add_param"}},
      {11, {"PF_GetPixelFormat", "checkout 1 ", "new_world"}},
      {14, {"PF_UpdateParamUI"}},
      {23, {"checkout_layer", "acquire", "new_handle", "lock"}},
      {24,
       {"checkout_output", "acquire PF World Suite 2", "PF_GetPixelFormat", "checkout 1 ", "checkout 28 ",
        "util new_handle", "acquire PF Sampling8", "copy input[", "tan", "checkout 5 ", "abort", "new_world",
        "copy inputall", "checkout 13 @250", "sample", "progress"}}};
  for (const auto& [action, status] : kinds) {
    for (const auto& [cmd, calls] : commands) {
      for (const std::string& call : calls) {
        SCOPED_TRACE(call);
        RecordingHost host;
        host.OnCall(call, action);
        host.SetFloat(1, 400);  // enough flakes for a sample and a report
        EXPECT_EQ(host.Frame(cmd, 200), status);
        EXPECT_EQ(host.Outstanding(), "");
        EXPECT_STREQ(host.out.return_msg, "");
      }
    }
  }
}

TEST(Guard, ACommandFailsWithoutItsSuite) {
  for (const auto& [cmd, call] :
       {std::pair{14, "acquire PF P"}, {23, "acquire PF H"}, {24, "acquire PF S"}}) {
    for (const PF_Err answer : {PF_Err{1}, RecordingHost::kNullSuite}) {
      RecordingHost host;
      host.Refuse(call, answer);
      EXPECT_EQ(host.Frame(cmd, 0), 516) << call;
      EXPECT_EQ(host.Outstanding(), "") << call;
    }
  }
}

}  // namespace
