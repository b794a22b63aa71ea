// The two steps of the smart render up to the render pass.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>

#include "tests/support/recording_host.h"

bool operator==(const PF_LRect& a, const PF_LRect& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

namespace {

TEST(PreRender, AgreesOnRectanglesAndLeavesTheGeometry) {
  struct Row {
    PF_LRect request, result, max, heldResult, heldMax, expectedResult, expectedMax;
    double geometry[4];
  };
  const PF_LRect frame{0, 0, 100, 50}, none{};
  const Row rows[] = {
      {frame, {10, 4, 60, 40}, frame, none, none, {10, 4, 60, 40}, frame, {100, 50, 10, 4}},
      {frame, {7, 8, 7, 8}, frame, none, none, frame, frame, {100, 50, 7, 8}},
      {frame, {10, 40, 60, 40}, frame, none, none, frame, frame, {100, 50, 10, 40}},
      {{-50, -50, 200, 200}, frame, frame, none, none, frame, frame, {100, 50, 0, 0}},
      {{20, 10, 30, 15},
       frame,
       {-5, -6, 100, 50},
       none,
       none,
       {20, 10, 30, 15},
       {-5, -6, 100, 50},
       {105, 56, 5, 6}},
      {{5, 5, 5, 9}, frame, frame, none, none, frame, frame, {100, 50, 0, 0}},
      {{9, 5, 5, 9}, frame, frame, none, none, frame, frame, {100, 50, 0, 0}},
      {frame,
       {10, 4, 60, 40},
       frame,
       {-5, -6, 2, 3},
       {-20, 0, 10, 300},
       {0, 0, 60, 40},
       {-20, 0, 100, 300},
       {100, 50, 10, 4}},
      {frame, {3, 3, 3, 3}, none, {1, 1, 5, 5}, {2, 2, 9, 9}, {1, 1, 5, 5}, {2, 2, 9, 9}, {0, 0, 3, 3}},
      {frame, {10, 4, 60, 40}, frame, {9, 9, 3, 3}, {9, 9, 3, 3}, {10, 4, 60, 40}, frame, {100, 50, 10, 4}},
      {{20, 20, 30, 30}, {0, 0, 10, 10}, frame, none, none, {20, 20, 10, 10}, frame, {100, 50, 0, 0}},
      {frame,
       frame,
       {INT_MIN, INT_MIN, INT_MAX, INT_MAX},
       none,
       none,
       frame,
       {INT_MIN, INT_MIN, INT_MAX, INT_MAX},
       {4294967295.0, 4294967295.0, 2147483648.0, 2147483648.0}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    RecordingHost host;
    host.in.current_time = 700;
    host.in.time_step = 33;
    host.preInput.output_request = {row.request, 3, 0xF, 1, {}, {}};
    host.layerResult = {row.result, row.max};
    host.preOutput = {row.heldResult, row.heldMax, 0x5A, nullptr, nullptr};
    const PF_PreRenderInput before = host.preInput;
    EXPECT_EQ(host.Call(PF_Cmd_SMART_PRE_RENDER), 0);
    EXPECT_TRUE(host.Called("checkout_layer 0 id 0 [")) << host.Log();
    EXPECT_NE(host.Log().find("] field 3 mask 15 preserve 0 @700/33/1000\n"), std::string::npos)
        << host.Log();
    EXPECT_EQ(host.LogBetween("checkout_layer", "none"),
              "acquire PF Handle Suite 1\nnew_handle 32\nlock h1\nrelease PF Handle Suite 1\n");
    EXPECT_EQ(std::memcmp(&host.preInput, &before, sizeof before), 0);
    EXPECT_EQ(host.preOutput.result_rect, row.expectedResult);
    EXPECT_EQ(host.preOutput.max_result_rect, row.expectedMax);
    EXPECT_EQ(host.preOutput.flags, 0x5A);
    EXPECT_EQ(host.preOutput.delete_pre_render_data_func, nullptr);
    ASSERT_NE(host.preOutput.pre_render_data, nullptr);
    double geometry[4];
    std::memcpy(geometry, *static_cast<PF_Handle>(host.preOutput.pre_render_data), sizeof geometry);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(geometry[i], row.geometry[i]) << i;
    EXPECT_EQ(host.Outstanding(), "");
  }
}

TEST(PreRender, RefusalsLeakNothing) {
  for (const char* call : {"new_handle", "lock"}) {
    RecordingHost host;
    host.Refuse(call);
    EXPECT_EQ(host.Call(PF_Cmd_SMART_PRE_RENDER), 0) << call;
    EXPECT_EQ(host.preOutput.pre_render_data, nullptr) << call;
    EXPECT_EQ(host.preOutput.result_rect, host.preInput.output_request.rect) << call;
    EXPECT_EQ(host.Outstanding(), "") << call;
  }
  RecordingHost host;
  host.Refuse("checkout_layer", 88);
  EXPECT_EQ(host.Call(PF_Cmd_SMART_PRE_RENDER), 88);
  EXPECT_EQ(host.Outstanding(), "");
  if (host.preOutput.pre_render_data != nullptr) {
    const double zero[4] = {};
    EXPECT_EQ(std::memcmp(*static_cast<PF_Handle>(host.preOutput.pre_render_data), zero, sizeof zero), 0);
  }
}

TEST(SmartRender, ReturnsEarlyWithoutWorlds) {
  struct Row {
    std::function<void(RecordingHost&)> spoil;
    PF_Err status;
    const char* log;
  };
  const char* const both = "checkout_layer_pixels 0\ncheckout_output\n";
  const Row rows[] = {
      {[](auto& host) { host.Refuse("checkout_layer_pixels", 61); }, 61, "checkout_layer_pixels 0\n"},
      {[](auto& host) { host.Refuse("checkout_output", 62); }, 62, both},
      {[](auto& host) { host.lentInput = nullptr; }, 0, both},
      {[](auto& host) { host.lentOutput = nullptr; }, 0, both},
      {[](auto& host) { host.input.width = 0; }, 0, both},
      {[](auto& host) { host.input.height = 0; }, 0, both},
      {[](auto& host) { host.output.width = 0; }, 0, both},
      {[](auto& host) { host.output.height = -1; }, 0, both},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    RecordingHost host;
    const auto before = host.Bytes(host.output);
    row.spoil(host);
    EXPECT_EQ(host.SmartFrame(0), row.status);
    EXPECT_EQ(host.Log(), row.log);
    EXPECT_EQ(host.Outstanding(), "");
    EXPECT_EQ(std::memcmp(host.output.data, before.data(), before.size()), 0);
  }
}

}  // namespace
