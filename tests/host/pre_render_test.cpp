// The first step of the smart render.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>

#include "tests/support/recording_host.h"

bool operator==(const PF_LRect& a, const PF_LRect& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

namespace {

TEST(PreRender, AgreesOnRectanglesAndLeavesTheGeometry) {
  constexpr PF_LRect kFrame{0, 0, 100, 50}, kPart{10, 4, 60, 40}, kWide{-5, -6, 100, 50}, kNone{};
  constexpr PF_LRect kAll{INT_MIN, INT_MIN, INT_MAX, INT_MAX}, kHeld{-20, 3, 10, 300};
  const struct {
    PF_LRect request, result, max, held, expectedResult, expectedMax;
    double geometry[4];
  } rows[] = {
      {kFrame, kPart, kFrame, kNone, kPart, kFrame, {100, 50, 10, 4}},
      {kPart, kFrame, kWide, kNone, kPart, kWide, {105, 56, 5, 6}},
      {kAll, kFrame, kFrame, kNone, kFrame, kFrame, {100, 50, 0, 0}},
      {kFrame, {7, 8, 7, 9}, kFrame, kNone, kFrame, kFrame, {100, 50, 7, 8}},
      {kFrame, {10, 40, 60, 40}, kFrame, kNone, kFrame, kFrame, {100, 50, 10, 40}},
      {{9, 5, 5, 9}, kFrame, kFrame, kNone, kFrame, kFrame, {100, 50, 0, 0}},
      {kFrame, kPart, kFrame, kHeld, {0, 3, 60, 50}, {-20, 0, 100, 300}, {100, 50, 10, 4}},
      {kFrame, kNone, kNone, kPart, kPart, kPart, {0, 0, 0, 0}},
      {kFrame, kPart, kFrame, {9, 9, 3, 3}, kPart, kFrame, {100, 50, 10, 4}},
      {kFrame, kFrame, kAll, kNone, kFrame, kAll, {4294967295.0, 4294967295.0, 2147483648.0, 2147483648.0}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    RecordingHost host;
    host.in.current_time = 700;
    host.in.time_step = 33;
    host.preInput.output_request = {row.request, 3, 0xF, 1, {}, {}};
    host.layerResult = {row.result, row.max};
    host.preOutput.result_rect = host.preOutput.max_result_rect = row.held;
    EXPECT_EQ(host.Call(PF_Cmd_SMART_PRE_RENDER), 0);
    EXPECT_TRUE(host.log.ends_with(
        " field 3 mask 15 preserve 0 @700/33/1000\nacquire PF Handle Suite 1\nnew_handle 32\nlock\n"
        "release PF Handle Suite 1\n"));
    EXPECT_EQ(host.Called("checkout_layer 0 id 0 [0 0 100 50]"), row.request == kFrame);
    EXPECT_EQ(host.preInput.output_request.preserve_rgb_of_zero_alpha, 1);
    EXPECT_EQ(host.preOutput.result_rect, row.expectedResult);
    EXPECT_EQ(host.preOutput.max_result_rect, row.expectedMax);
    EXPECT_EQ(std::memcmp(*static_cast<PF_Handle>(host.preOutput.pre_render_data), row.geometry, 32), 0);
    EXPECT_EQ(host.Outstanding(), "");
  }
}

TEST(PreRender, ReturnsTheCheckOutsStatusAndReportsTheRequest) {
  RecordingHost host;
  host.Refuse("checkout_layer", 88);
  EXPECT_EQ(host.Call(PF_Cmd_SMART_PRE_RENDER), 88);
  EXPECT_EQ(host.preOutput.result_rect, host.preInput.output_request.rect);
}

TEST(PreRender, LeavesNothingThatTheHostWillNotTakeBack) {
  RecordingHost host;
  host.Refuse("lock");
  host.OnCall("dispose", []() -> PF_Err { throw PF_Err{89}; });
  EXPECT_EQ(host.Call(PF_Cmd_SMART_PRE_RENDER), 0);
  EXPECT_EQ(host.preOutput.pre_render_data, nullptr);
}

}  // namespace
