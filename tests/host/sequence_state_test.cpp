// The record that an instance keeps: its making, its bytes, its end.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/recording_host.h"

namespace {

std::string Hex(PF_Handle handle) {
  std::string text;
  for (int i = 0; i < 28; ++i) {
    char byte[3];
    std::snprintf(byte, sizeof byte, "%02x", static_cast<unsigned char*>(*handle)[i]);
    text += byte;
  }
  return text;
}

const std::string kEmpty = "ffffffff" + std::string(48, '0');

TEST(SequenceState, IsMadeOnceAndFreedOnce) {
  for (const bool odd : {false, true}) {
    RecordingHost host;
    host.oddHandles = odd;
    EXPECT_EQ(host.Call(PF_Cmd_SEQUENCE_SETDOWN), 0);
    EXPECT_EQ(host.Log(), "");
    EXPECT_EQ(host.Call(PF_Cmd_SEQUENCE_SETUP), 0);
    EXPECT_EQ(host.Log(), "util new_handle 28\n");
    EXPECT_EQ(Hex(host.out.sequence_data), kEmpty);
    std::memset(*host.out.sequence_data, 0x3C, 28);
    EXPECT_EQ(host.Call(PF_Cmd_SEQUENCE_SETUP), 0);
    EXPECT_EQ(Hex(host.out.sequence_data).find_first_not_of("3c"), std::string::npos);
    for (const PF_Cmd cmd : {PF_Cmd_SEQUENCE_RESETUP, PF_Cmd_SEQUENCE_FLATTEN}) EXPECT_EQ(host.Call(cmd), 0);
    host.ForgetCalls();
    EXPECT_EQ(host.Call(PF_Cmd_SEQUENCE_SETDOWN), 0);
    EXPECT_EQ(host.Log(), "util dispose h1\n");
    EXPECT_EQ(host.out.sequence_data, nullptr);
    EXPECT_EQ(host.SmartFrame(0), 0);  // a frame makes it anew
    EXPECT_TRUE(host.Called("util new_handle 28"));
    EXPECT_NE(host.out.sequence_data, nullptr);
    EXPECT_EQ(host.Outstanding(), "");
  }
}

TEST(SequenceState, TellsTheUserWithoutMemory) {
  RecordingHost host;
  host.Refuse("util new_handle");
  EXPECT_EQ(host.Call(PF_Cmd_SEQUENCE_SETUP), 517);
  EXPECT_EQ(host.out.sequence_data, nullptr);
  EXPECT_STREQ(host.out.return_msg, "Out of memory.. (1:1)");
  EXPECT_EQ(host.Log(), "util new_handle 28\nstrcpy Out of memory.. (1:1)\n");
}

TEST(SequenceState, LivesWithoutTheHostsHandles) {
  RecordingHost host;
  host.utils.host_new_handle = nullptr;
  host.utils.host_dispose_handle = nullptr;
  EXPECT_EQ(host.Call(PF_Cmd_SEQUENCE_SETUP), 0);
  ASSERT_NE(host.out.sequence_data, nullptr);
  EXPECT_EQ(Hex(host.out.sequence_data), kEmpty);
  EXPECT_EQ(host.SmartFrame(0), 0);
  EXPECT_EQ(host.SmartFrame(100), 0);
  EXPECT_EQ(host.LogBetween("checkin 18", "abort"),
            "checkout 5 @100/100/1000\ncheckin 5\ncheckout 7 @100/100/1000\ncheckin 7\n"
            "checkout 13 @100/100/1000\ncheckin 13\n");
  EXPECT_EQ(host.Call(PF_Cmd_SEQUENCE_SETDOWN), 0);
  EXPECT_EQ(host.out.sequence_data, nullptr);
}

}  // namespace
