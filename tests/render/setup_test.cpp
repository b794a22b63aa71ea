// Stages of the frame set-up that work on the record alone.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <tuple>

#include "effect/host/parameter_index.h"
#include "effect/render/flake_color.h"
#include "effect/render/frame_geometry.h"
#include "effect/render/frame_parameters.h"
#include "effect/render/motion.h"
#include "tests/support/random_frame.h"

namespace {

TEST(Setup, ShutterTimesAndTravel) {
  const struct {
    PF_Fixed angle;
    std::int32_t time, step, end;
    double open;
  } cases[] = {{0, 100, 1001, 1101, 1},
               {-32768, 100, 1001, 1101, 1},
               {32768, 100, 1001, 600, 0.5},
               {32768, 100, -1001, -400, 0.5},
               {98304, 0, 1001, 1501, 1.5},
               {21845, 0, 3, 0, 21845 / 65536.0},
               {65536, INT_MAX, 10, INT_MIN + 9, 1}};
  const auto value = [](int index, std::int32_t time) { return index + 0.1 * time; };
  for (const auto& c : cases) {
    FrameHost host;
    host.inData.shutter_angle = c.angle;
    host.inData.current_time = c.time;
    host.inData.time_step = c.step;
    host.inData.inter.checkin_param = [](PF_ProgPtr, PF_ParamDef*) { return PF_Err_NONE; };
    host.inData.inter.checkout_param = [](PF_ProgPtr, std::int32_t index, std::int32_t time, std::int32_t,
                                          std::uint32_t, PF_ParamDef* def) {
      def->u.fs_d.value = index + 0.1 * time;
      return PF_Err_NONE;
    };
    FrameField f{.scale = FX_PARc(&host.inData), .inData = &host.inData};
    ReadTimes(f);
    EXPECT_EQ(std::tuple(f.renderTime, f.timeStep, f.shutterEndTime), std::tuple(c.time, c.step, c.end));
    f.stepSeconds = c.step / 30'000.0;
    const ShutterMotion motion = SampleShutterMotion(f);
    const auto travel = [&](int index) { return (value(index, c.end) * f.stepSeconds) * c.open; };
    EXPECT_EQ(std::tuple(motion.fall, motion.wind, motion.cycles),
              std::tuple(travel(kSpeed), travel(kWind), travel(kFrequency)));
  }
}

TEST(Setup, FieldGeometryOfRandomFrames) {
  constexpr double FrameField::*kResults[] = {
      &FrameField::frameMax,       &FrameField::fieldWidth,      &FrameField::fieldHeight,
      &FrameField::halfFieldWidth, &FrameField::halfFieldHeight, &FrameField::offsetX,
      &FrameField::offsetY,        &FrameField::offsetDeltaX,    &FrameField::offsetDeltaY,
      &FrameField::groundY,        &FrameField::embedDistance,   &FrameField::spreadTan};
  for (std::uint32_t seed = 0; seed < 1000; ++seed) {
    RandomFrame<PF_Pixel> random(seed);
    if (random.Broken()) continue;
    FrameSetup<PF_Pixel>& got = random.Record();
    FrameSetup<PF_Pixel> want{{.scale = got.scale, .inData = got.inData}};
    FillRecord(random.Look(), want);
    for (const auto field : kResults) got.*field = -1;
    SetFieldGeometry(got, {random.Look().spreadDegrees, random.Look().offset, random.Look().offsetEnd});
    for (const auto field : kResults) ASSERT_EQ(got.*field, want.*field) << seed << " " << &field - kResults;
    SetFieldGeometry(got, {90, {}, {}});
    ASSERT_NEAR(got.spreadTan, std::tan(44.95 * M_PI / 180), 1e-12);
  }
}

template <class T>
class FlakeColor : public testing::Test {};
using Depths = testing::Types<PF_Pixel, PF_Pixel16, PF_PixelFloat>;
TYPED_TEST_SUITE(FlakeColor, Depths);

TYPED_TEST(FlakeColor, EveryOpacityAndInfluenceInTenths) {
  using T = TypeParam;
  FrameHost host;
  FrameSetup<T> want{{.scale = FX_PARc(&host.inData), .inData = &host.inData}};
  for (int tenth = 0; tenth <= 1010; ++tenth) {
    SnowLook look{.opacity = tenth * 0.1, .influence = 100 - tenth * 0.1, .transferMode = tenth % 4};
    look.color = {255, static_cast<std::uint8_t>(tenth), static_cast<std::uint8_t>(tenth * 7), 255};
    FillRecord(look, want);
    FrameSetup<T> got{{.scale = FX_PARc(&host.inData), .inData = &host.inData}};
    got.opacity = want.opacity;
    got.influence = want.influence;
    got.transferMode = want.transferMode;
    ASSERT_EQ(SetFlakeColor(got, look.color), tenth >= (sizeof(T) == 4 ? 4 : 1)) << "0.3 % of 255 is no step";
    ASSERT_EQ(0, std::memcmp(&got.flakeColor, &want.flakeColor, sizeof(T))) << tenth;
    if (!(want.flakeColor.alpha > 0)) continue;
    ASSERT_EQ(std::tuple(got.influenceScale, got.flakeRed, got.flakeGreen, got.flakeBlue),
              std::tuple(want.influenceScale, want.flakeRed, want.flakeGreen, want.flakeBlue));
    ASSERT_TRUE(got.transferOp == want.transferOp && got.underOp == want.underOp) << tenth;
  }
}

}  // namespace
