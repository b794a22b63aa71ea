// Every call of a frame, in order, and what the frame's background holds.
#include <gtest/gtest.h>

#include <climits>
#include <utility>

#include "tests/support/recording_host.h"

namespace {

std::string Reads(std::initializer_list<int> indices, int time) {
  std::string text;
  for (const int index : indices)
    text += "checkout " + std::to_string(index) + " @" + std::to_string(time) + "/100/1000\ncheckin " +
            std::to_string(index) + "\n";
  return text;
}

struct Depth {
  PF_PixelFormat format;
  const char *sampling, *worldSuite, *newWorld, *disposeWorld;
};
constexpr Depth kDepths[] = {{PF_PixelFormat_ARGB32, "PF Sampling8 Suite 1", "PF World Suite 1",
                              "new_world 4x3 flags 0", "dispose_world"},
                             {PF_PixelFormat_ARGB64, "PF Sampling16 Suite 1", "PF World Suite 1",
                              "new_world 4x3 flags 2", "dispose_world"},
                             {PF_PixelFormat_ARGB128, "PF SamplingFloat Suite 1", "PF World Suite 2",
                              "PF_NewWorld 4x3 clear 0 format 842229089", "PF_DisposeWorld"}};

std::string ExpectedFrame(const Depth& depth, bool smart) {
  const auto release = [](const std::string& suite) { return "release " + suite + "\n"; };
  std::string log = smart ? "checkout_layer_pixels 0\ncheckout_output\n" : "";
  log += "acquire PF World Suite 2\nPF_GetPixelFormat output\nrelease PF World Suite 2\n" +
         Reads({1, 4, 2, 30, 19, 21, 22, 23, 25, 6, 8, 9, 26, 29, 31, 15, 11, 12, 3, 14, 16, 28}, 200) +
         Reads({11, 28}, 250);
  if (smart) log += "acquire PF Handle Suite 1\ndispose h1\n";
  log += "util new_handle 28\nacquire " + std::string(depth.sampling) +
         "\ncopy input[2 1 38 29] -> output[2 1 38 29]\ntan 0.1308996938995747\n" + Reads({18}, 200);
  for (const int time : {0, 100, 200}) log += Reads({5, 7, 13}, time);
  log += "abort\nacquire " + std::string(depth.worldSuite) + "\n" + depth.newWorld +
         "\ncopy inputall -> world1all\n" + Reads({5, 7, 13}, 250) + depth.disposeWorld + " world1\n";
  if (smart) log += release("PF Handle Suite 1");
  return log + release(depth.worldSuite) + release(depth.sampling);
}

TEST(FrameCalls, ComeInOrder) {
  for (const Depth& depth : kDepths)
    for (const bool smart : {true, false}) {
      SCOPED_TRACE(depth.sampling);
      RecordingHost host;
      host.SetImages(depth.format, 40, 30);
      host.output.extent_hint = {2, 1, 38, 29};
      EXPECT_EQ(smart ? host.SmartFrame(200) : host.PlainFrame(200), 0);
      EXPECT_EQ(host.Log(), ExpectedFrame(depth, smart));
      EXPECT_EQ(host.Outstanding(), "");
      EXPECT_EQ(host.smartInput.pre_render_data, nullptr);
      host.params[26].u.bd.value = 0;
      EXPECT_EQ(host.PlainFrame(200), 0);
      EXPECT_EQ(host.LogBetween(std::string("acquire ") + depth.sampling, "tan"), "fill output clear all\n");
    }
}

TEST(FrameCalls, ReducedWorldIsATenthButAtLeastTwo) {
  struct Row {
    int width, height;
    const char* made;
  };
  for (const Row& row :
       {Row{15, 8, "new_world 2x2 "}, Row{29, 30, "new_world 2x3 "}, Row{30, 19, "new_world 3x2 "},
        Row{1, 1, "new_world 2x2 "}, Row{105, 99, "new_world 10x9 "}}) {
    RecordingHost host;
    host.SetImages(PF_PixelFormat_ARGB32, row.width, row.height);
    EXPECT_EQ(host.SmartFrame(0), 0);
    EXPECT_TRUE(host.Called(row.made)) << host.Log();
    host.SetFloat(21, 0.0);
    EXPECT_EQ(host.SmartFrame(0), 0);
    EXPECT_FALSE(host.Called("new_world")) << host.Log();
    EXPECT_FALSE(host.Called("acquire PF World Suite 1")) << host.Log();
  }
}

TEST(FrameCalls, SpreadIsHalvedAndClamped) {
  for (const auto& [spread, tan] : {std::pair{0.0, "tan 0\n"},
                                    {15.0, "tan 0.1308996938995747\n"},
                                    {89.9, "tan 0.78452549877145117\n"},
                                    {90.0, "tan 0.78452549877145117\n"}}) {
    RecordingHost host;
    host.SetFloat(9, spread);
    EXPECT_EQ(host.SmartFrame(0), 0);
    EXPECT_NE(host.Log().find(tan), std::string::npos) << spread << host.Log();
  }
}

TEST(FrameCalls, ShutterEndsWhereTheShutterAngleSays) {
  struct Row {
    PF_Fixed shutter;
    int step, time, end;
  };
  for (const Row& row :
       {Row{32768, 100, 0, 50}, Row{0, 100, 300, 400}, Row{-32768, 100, 0, 100}, Row{98304, 33, 100, 149},
        Row{32768, -33, 100, 84}, Row{65536, 7, 5, 12}, Row{1, 65535, 9, 9}, Row{0x7FFFFFFF, 100, 0, 3276799},
        Row{0, 0, 3, 3}, Row{32768, 100, INT_MAX, INT_MIN + 49}}) {
    RecordingHost host;
    host.in.shutter_angle = row.shutter;
    host.in.time_step = row.step;
    if (row.time == INT_MAX) host.in.local_time_step = INT_MAX;
    EXPECT_EQ(host.SmartFrame(row.time), 0);
    const std::string at = " @" + std::to_string(row.end) + "/" + std::to_string(row.step) + "/1000";
    const std::string between = host.LogBetween("checkin 28", "acquire");
    EXPECT_EQ(between, "checkout 11" + at + "\ncheckin 11\ncheckout 28" + at + "\ncheckin 28\n");
    for (const char* index : {"5", "7", "13"})
      EXPECT_NE(host.LogBetween("abort", "none").find(std::string("checkout ") + index + at + "\n"),
                std::string::npos);
  }
}

// Without the layer there is nothing to go behind, so "Embed Depth %" does not matter; with it, it does.
TEST(FrameCalls, EmbedDepthCountsOnlyWithTheLayer) {
  for (const int composite : {0, 1}) {
    std::vector<std::byte> pictures[2];
    for (const double embed : {0.0, 100.0}) {
      RecordingHost host;
      host.SetFloat(1, 3000);
      host.params[26].u.bd.value = composite;
      host.SetFloat(30, embed);
      EXPECT_EQ(host.SmartFrame(0), 0);
      pictures[embed > 0.0] = host.Bytes(host.output);
    }
    EXPECT_EQ(pictures[0] == pictures[1], composite == 0);
  }
}

}  // namespace
