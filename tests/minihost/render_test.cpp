#include <gmock/gmock.h>

#include <atomic>
#include <cmath>
#include <cstring>
#include <limits>
#include <thread>

#include "fake_effect.h"
#include "minihost/image.h"

namespace minihost {
namespace {

using testing::HasSubstr;

constexpr PF_Fixed kOne = 65536;
constexpr Depth kDepths[] = {Depth::kBits8, Depth::kBits16, Depth::kFloat};

bool operator==(const PF_LRect& a, const PF_LRect& b) {
  return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

class RenderTest : public FakeEffectTest {
 protected:
  static PF_PixelFormat FormatOf(Call& call, const PF_LayerDef* world) {
    PF_PixelFormat format = PF_PixelFormat_INVALID;
    const auto* suite = call.Acquire<PF_WorldSuite2>(kPFWorldSuite, 2);
    EXPECT_EQ(suite->PF_GetPixelFormat(world, &format), PF_Err_NONE);
    EXPECT_EQ(call.in.pica_basicP->ReleaseSuite(kPFWorldSuite, 2), 0);
    return format;
  }

  static PF_ParamDef CheckOut(Call& call, int index, int time, std::uint32_t scale) {
    PF_ParamDef def{};
    EXPECT_EQ(call.in.inter.checkout_param(call.in.effect_ref, index, time, 1, scale, &def), PF_Err_NONE);
    EXPECT_EQ(call.in.inter.checkin_param(call.in.effect_ref, &def), PF_Err_NONE);
    return def;
  }

  static void ExpectClean(const Instance& instance) {
    EXPECT_EQ(instance.ledger().Outstanding(), 0u) << testing::PrintToString(instance.ledger().Missing());
    EXPECT_THAT(instance.ledger().faults(), testing::IsEmpty());
  }
};

TEST_F(RenderTest, PlainProtocolBringsEveryRecord) {
  for (const Depth depth : kDepths) {
    const Image input(64, 40, depth);
    Image output(64, 40, depth);
    int renders = 0;
    On(PF_Cmd_RENDER, [&](Call& call) {
      ++renders;
      EXPECT_EQ(call.in.current_time, 700);
      EXPECT_EQ(call.in.time_step, 50);
      EXPECT_EQ(call.in.local_time_step, 100);
      EXPECT_EQ(call.in.time_scale, 3000u);
      EXPECT_EQ(call.in.shutter_angle, kOne / 4);
      EXPECT_EQ(call.in.downsample_x.den, 2u);
      EXPECT_EQ(call.in.downsample_y.den, 3u);
      EXPECT_EQ(call.in.pixel_aspect_ratio.num, 10);
      EXPECT_EQ(call.extra, nullptr);
      EXPECT_EQ(call.params[0]->u.ld.data, input.data());
      EXPECT_EQ(call.output->data, output.data());
      EXPECT_TRUE(call.output->extent_hint == (PF_LRect{1, 2, 60, 30}));
      EXPECT_EQ(FormatOf(call, call.output), PixelFormatOf(depth));
      EXPECT_EQ(FormatOf(call, &call.params[0]->u.ld), PixelFormatOf(depth));
      EXPECT_EQ(call.params[kAmount]->u.fs_d.value, 30) << "at the current time";
      EXPECT_EQ(call.params[kAmount]->uu.id, 100 + kAmount);
      EXPECT_EQ(call.params[kTint]->u.cd.value.green, 20);
      EXPECT_EQ(call.params[kGroupEnd]->param_type, PF_Param_GROUP_END);
      EXPECT_DOUBLE_EQ(call.in.utils->ansi.tan(0.5), std::tan(0.5));
      call.in.utils->ansi.sprintf(call.out.return_msg, "%s\rline %d", "first", 2);
      return PF_Err{12345};
    });
    const auto effect = Make();
    ParameterSet parameters(effect->sharedParameters());
    parameters.Set(kAmount, Track({{0, 2.0}, {7, 30.0}, {8, 100.0}}));
    Instance instance(effect, parameters);
    Frame frame;
    frame.protocol = Protocol::kPlain;
    frame.time = 700;
    frame.timing = {3000, 50, 100, 90};
    frame.downsampleX = {1, 2};
    frame.downsampleY = {1, 3};
    frame.pixelAspectRatio = {10, 11};
    frame.input = &input;
    frame.output = &output;
    frame.shown = PF_LRect{1, 2, 60, 30};
    const RenderResult result = instance.Render(frame);
    EXPECT_EQ(result.err, 12345);
    EXPECT_EQ(result.message, "first\nline 2");
    EXPECT_EQ(renders, 1);
    ExpectClean(instance);
  }
}

TEST_F(RenderTest, SmartProtocolRendersTheLayerOrATileOfIt) {
  for (const Depth depth : kDepths) {
    for (const PF_LRect tile : {PF_LRect{0, 0, 64, 40}, PF_LRect{10, 5, 30, 25}, PF_LRect{63, 39, 64, 40}}) {
      const int width = tile.right - tile.left, height = tile.bottom - tile.top;
      Image input(64, 40, depth), output(width, height, depth);
      input.data()[static_cast<std::size_t>(tile.top) * input.rowBytes() +
                   static_cast<std::size_t>(tile.left) * BytesPerPixel(depth)] = std::byte{42};
      On(PF_Cmd_SMART_RENDER, [&](Call& call) {
        EXPECT_TRUE(call.smart().input->output_request.rect == tile);
        PF_EffectWorld *in = nullptr, *out = nullptr;
        EXPECT_EQ(call.smart().cb->checkout_layer_pixels(call.in.effect_ref, 0, &in), PF_Err_NONE);
        EXPECT_EQ(call.smart().cb->checkout_output(call.in.effect_ref, &out), PF_Err_NONE);
        EXPECT_EQ(out->data, output.data());
        for (const PF_EffectWorld* world : {in, out}) {
          EXPECT_EQ(world->width, width);
          EXPECT_EQ(world->height, height);
          EXPECT_TRUE(world->extent_hint == (PF_LRect{0, 0, width, height}));
          EXPECT_EQ(FormatOf(call, world), PixelFormatOf(depth));
        }
        EXPECT_EQ(call.params[kCentre]->u.td.x_value, 32 * kOne) << "of the layer, not of the tile";
        return call.in.utils->copy(call.in.effect_ref, in, out, &out->extent_hint, &out->extent_hint);
      });
      Instance instance(Make());
      Frame frame;
      frame.input = &input;
      frame.output = &output;
      if (width < 64) frame.tile = tile;
      const RenderResult result = instance.Render(frame);
      EXPECT_EQ(result.err, PF_Err_NONE);
      EXPECT_TRUE(result.resultRect == tile);
      EXPECT_TRUE(result.maxResultRect == (PF_LRect{0, 0, 64, 40}));
      EXPECT_EQ(output.data()[0], std::byte{42});
      EXPECT_EQ(instance.ledger().lent(Ledger::Kind::kLayer), 2u);
      ExpectClean(instance);
    }
  }
}

TEST_F(RenderTest, WhatTheEffectDoesNotPromiseIsTransparent) {
  PF_LRect promised{12, 7, 20, 9};
  On(PF_Cmd_SMART_PRE_RENDER, [&](Call& call) {
    call.pre().output->result_rect = promised;
    return PF_Err_NONE;
  });
  int renders = 0;
  On(PF_Cmd_SMART_RENDER, [&](Call& call) {
    ++renders;
    PF_EffectWorld* out = nullptr;
    call.smart().cb->checkout_output(call.in.effect_ref, &out);
    const PF_Pixel white{255, 255, 255, 255};
    return call.in.utils->fill(call.in.effect_ref, &white, nullptr, out);
  });
  const Image input(64, 40, Depth::kBits8);
  Image output(20, 20, Depth::kBits8);
  Frame frame;
  frame.input = &input;
  frame.output = &output;
  frame.tile = PF_LRect{10, 5, 30, 25};
  Instance instance(Make());
  for (const bool empty : {false, true}) {
    if (empty) promised = {};
    for (int row = 0; row < 20; ++row) std::ranges::fill(output.Row<PF_Pixel>(row), PF_Pixel{9, 9, 9, 9});
    EXPECT_EQ(instance.Render(frame).err, PF_Err_NONE);
    for (int row = 0; row < 20; ++row)
      for (int column = 0; column < 20; ++column) {
        const bool drawn = !empty && column >= 2 && column < 10 && row >= 2 && row < 4;
        EXPECT_EQ(output.Row<PF_Pixel>(row)[static_cast<std::size_t>(column)].alpha, drawn ? 255 : 0);
      }
  }
  EXPECT_EQ(renders, 1) << "nothing to render, no second step";
  ExpectClean(instance);

  promised = {9, 5, 30, 25};
  const RenderResult result = instance.Render(frame);
  EXPECT_EQ(result.err, PF_Err_BAD_CALLBACK_PARAM);
  EXPECT_THAT(result.message, HasSubstr("(9, 5, 30, 25)"));
  EXPECT_EQ(renders, 1);
}

TEST_F(RenderTest, ALayerWithoutPixelsIsLentAsNone) {
  On(PF_Cmd_SMART_PRE_RENDER, [](Call& call) {
    PF_CheckoutResult result{{1, 1, 1, 1}, {1, 1, 1, 1}};
    EXPECT_EQ(call.pre().cb->checkout_layer(call.in.effect_ref, 0, 5, &call.pre().input->output_request, 0, 1,
                                            30, &result),
              PF_Err_NONE);
    EXPECT_TRUE(result.result_rect == PF_LRect{} && result.max_result_rect == PF_LRect{});
    call.pre().output->result_rect = call.pre().input->output_request.rect;
    return PF_Err_NONE;
  });
  On(PF_Cmd_SMART_RENDER, [](Call& call) {
    PF_EffectWorld* in = call.output;
    EXPECT_EQ(call.smart().cb->checkout_layer_pixels(call.in.effect_ref, 5, &in), PF_Err_NONE);
    EXPECT_EQ(in, nullptr);
    return PF_Err_NONE;
  });
  Image output(8, 6, Depth::kFloat);
  Frame frame;
  frame.output = &output;
  Instance instance(Make());
  EXPECT_EQ(instance.Render(frame).err, PF_Err_NONE);
  ExpectClean(instance);
}

TEST_F(RenderTest, ParametersComeAsTheyStandAtTheAskedTime) {
  const struct {
    FrameTiming timing;
    int time;
    std::uint32_t scale;
    double frame;
  } cases[] = {
      {{3000, 50, 100, 180}, 250, 3000, 2.5}, {{3000, 50, -100, 180}, 250, 3000, 2.5},
      {{3000, 50, 100, 180}, 25, 300, 2.5},   {{3000, 50, 0, 180}, 250, 3000, 0},
      {{0, 50, 100, 180}, 250, 0, 2.5},       {{3000, 50, 100, 180}, 1, 0, 0},
      {{3000, 50, 100, 180}, -100, 3000, -1}, {{3000, 50, 100, 180}, 2147483647, 3000, 21474836.47},
  };
  Image output(101, 33, Depth::kBits8);
  Frame frame;
  frame.protocol = Protocol::kPlain;
  frame.output = &output;
  const auto effect = Make();
  ParameterSet parameters(effect->sharedParameters());
  parameters.Set(kAmount, Track({{-2, 0.5}, {30000000, 200.0}}));
  parameters.Set(kTint, Track(Color{0.4, 127.5, 255}));
  parameters.Set(kCentre, Track({{0, Point{50, 10}}, {10, Point{-50, 1e9}}}));
  Instance instance(effect, parameters);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.frame);
    frame.timing = c.timing;
    On(PF_Cmd_RENDER, [&](Call& call) {
      const PF_ParamDef amount = CheckOut(call, kAmount, c.time, c.scale);
      EXPECT_EQ(amount.u.fs_d.value, std::get<double>(parameters.At(kAmount, c.frame)));
      EXPECT_STREQ(amount.name, "Amount");
      EXPECT_EQ(amount.u.fs_d.valid_max, 200.0f);
      const PF_Pixel tint = CheckOut(call, kTint, c.time, c.scale).u.cd.value;
      EXPECT_EQ(tint.alpha, 255);
      EXPECT_EQ(tint.red, 0);
      EXPECT_EQ(tint.green, 128);
      const auto point = std::get<Point>(parameters.At(kCentre, c.frame));
      const PF_PointDef centre = CheckOut(call, kCentre, c.time, c.scale).u.td;
      EXPECT_EQ(centre.x_value, static_cast<PF_Fixed>(std::lround(point.x * 1.01 * kOne)));
      const double y = std::min(std::round(point.y * 0.33 * kOne), 2147483647.0);
      EXPECT_EQ(centre.y_value, static_cast<PF_Fixed>(y));
      EXPECT_EQ(CheckOut(call, kGroup, c.time, c.scale).param_type, PF_Param_GROUP_START);
      return PF_Err_NONE;
    });
    EXPECT_EQ(instance.Render(frame).err, PF_Err_NONE);
  }
  EXPECT_EQ(instance.ledger().lent(Ledger::Kind::kParameter), 4 * std::size(cases));
  ExpectClean(instance);
}

TEST_F(RenderTest, HooksStopTheRenderAndTheirExceptionsComeBack) {
  Image output(8, 6, Depth::kBits8);
  Frame frame;
  frame.protocol = Protocol::kPlain;
  frame.output = &output;
  On(PF_Cmd_RENDER, [](Call& call) {
    for (int i = 0; i < 10; ++i) {
      if (const PF_Err err = call.in.inter.progress(call.in.effect_ref, i, 10)) return err;
    }
    return call.in.inter.abort(call.in.effect_ref);
  });
  Instance instance(Make());
  EXPECT_EQ(instance.Render(frame).err, PF_Err_NONE) << "without hooks nobody stops it";

  int last = -1;
  frame.hooks.progress = [&](int current, int total) {
    last = current;
    return current + 5 == total ? Verdict::kStop : Verdict::kContinue;
  };
  EXPECT_EQ(instance.Render(frame).err, kRenderStopped);
  EXPECT_EQ(last, 5);

  // A hook may drive another instance in the middle of a command.
  Instance other(Make());
  frame.hooks.progress = [&](int, int) {
    other.Send(PF_Cmd_SEQUENCE_FLATTEN);
    return Verdict::kContinue;
  };
  frame.hooks.abort = [] { return Verdict::kStop; };
  EXPECT_EQ(instance.Render(frame).err, kRenderStopped);
  frame.hooks.abort = []() -> Verdict { throw std::runtime_error("disk full"); };
  EXPECT_EQ(ErrorOf<std::runtime_error>([&] { instance.Render(frame); }), "disk full");
  frame.hooks.abort = [&]() -> Verdict {
    instance.Close();
    return Verdict::kContinue;
  };
  EXPECT_THAT(ErrorOf<std::logic_error>([&] { instance.Render(frame); }), HasSubstr("running another"));
  ExpectClean(instance);
}

TEST_F(RenderTest, RefusesFramesThatCannotBeAskedFor) {
  const Image input(8, 6, Depth::kBits8), deep(8, 6, Depth::kBits16), none;
  Image output(8, 6, Depth::kBits8), small(4, 6, Depth::kBits8);
  const std::pair<void (*)(Frame&, const Image& deep, Image& small, const Image& none), const char*> cases[] =
      {
          {[](Frame& f, const Image&, Image&, const Image&) { f.output = nullptr; }, "output"},
          {[](Frame& f, const Image&, Image&, const Image&) { f.input = f.output; }, "is the input"},
          {[](Frame& f, const Image& d, Image&, const Image&) { f.input = &d; }, "depths"},
          {[](Frame& f, const Image&, Image&, const Image& n) { f.input = &n; }, "empty"},
          {[](Frame& f, const Image&, Image& s, const Image&) { f.output = &s; }, "4 x 6"},
          {[](Frame& f, const Image&, Image& s, const Image&) {
             f.output = &s;
             f.tile = {5, 0, 9, 6};
           },
           "(5, 0, 9, 6)"},
          {[](Frame& f, const Image&, Image&, const Image&) {
             f.tile = {2, 2, 2, 4};
           },
           "empty"},
          {[](Frame& f, const Image&, Image&, const Image&) {
             f.shown = {0, 0, 8, 6};
           },
           "tile instead"},
          {[](Frame& f, const Image&, Image&, const Image&) {
             f.protocol = Protocol::kPlain;
             f.tile = {0, 0, 8, 6};
           },
           "no tiles"},
      };
  Instance instance(Make());
  for (const auto& [spoil, message] : cases) {
    Frame frame;
    frame.input = &input;
    frame.output = &output;
    spoil(frame, deep, small, none);
    EXPECT_THAT(ErrorOf([&] { instance.Render(frame); }), HasSubstr(message));
  }
}

TEST_F(RenderTest, SequenceDataStaysWithTheInstanceAndMovesBetweenCommands) {
  const void* place = nullptr;
  int moves = 0;
  const auto count = [&](Call& call) {
    int& value = **reinterpret_cast<int**>(call.out.sequence_data);
    moves += &value != place;
    place = &value;
    return PF_Err{++value};
  };
  On(PF_Cmd_SEQUENCE_SETUP, [](Call& call) {
    call.out.sequence_data = call.in.utils->host_new_handle(sizeof(int));
    **reinterpret_cast<int**>(call.out.sequence_data) = 10;
    return PF_Err_NONE;
  });
  On(PF_Cmd_SEQUENCE_FLATTEN, count);
  On(PF_Cmd_SEQUENCE_SETDOWN, [](Call& call) {
    call.in.utils->host_dispose_handle(call.out.sequence_data);
    call.out.sequence_data = nullptr;
    return PF_Err_NONE;
  });
  Instance first(Make()), second(Make());
  EXPECT_EQ(first.Send(PF_Cmd_SEQUENCE_FLATTEN).err, 11);
  EXPECT_EQ(first.Send(PF_Cmd_SEQUENCE_FLATTEN).err, 12);
  EXPECT_EQ(second.Send(PF_Cmd_SEQUENCE_FLATTEN).err, 11);
  EXPECT_EQ(moves, 3);
  ExpectClean(first);
  second = std::move(first);
  EXPECT_EQ(second.Send(PF_Cmd_SEQUENCE_FLATTEN).err, 13);
  EXPECT_THROW(second.Send(PF_Cmd_RENDER), std::invalid_argument);
  EXPECT_EQ(second.Close().err, PF_Err_NONE);
  EXPECT_EQ(second.ledger().returned(Ledger::Kind::kHandle), 1u);
  ExpectClean(second);
  EXPECT_THROW(second.Send(PF_Cmd_SEQUENCE_FLATTEN), std::logic_error);

  On(PF_Cmd_SEQUENCE_SETUP, [](Call& call) {
    call.in.utils->ansi.strcpy(call.out.return_msg, "no room");
    return PF_Err{517};
  });
  EXPECT_THAT(ErrorOf<EffectError>([] { Instance instance(Make()); }), HasSubstr("517: no room"));
  On(PF_Cmd_SEQUENCE_SETUP, [](Call&) { return PF_Err_NONE; });
  EXPECT_THROW(Instance(Make(), ParameterSet(Make()->sharedParameters())), std::invalid_argument);
}

TEST_F(RenderTest, TheEffectGreysParametersOut) {
  const auto update = [](Call& call) {
    PF_ParamDef def = *call.params[kAmount];
    const bool on = call.params[kSwitch]->u.bd.value != 0;
    def.ui_flags = on ? 0 : PF_PUI_DISABLED;
    const auto* suite = call.Acquire<PF_ParamUtilsSuite1>(kPFParamUtilsSuite, 1);
    const PF_Err err = suite->PF_UpdateParamUI(call.in.effect_ref, kAmount, &def);
    call.in.pica_basicP->ReleaseSuite(kPFParamUtilsSuite, 1);
    return err;
  };
  On(PF_Cmd_UPDATE_PARAMS_UI, update);
  On(PF_Cmd_USER_CHANGED_PARAM, update);
  const auto effect = Make();
  ParameterSet parameters(effect->sharedParameters());
  parameters.Set(kSwitch, Track({{0, 0.0}, {5, 1.0}}));
  Instance instance(effect, parameters);
  EXPECT_FALSE(instance.IsDisabled(kAmount));
  EXPECT_EQ(instance.UpdateParamsUi(UiEvent::kUpdate).err, PF_Err_NONE);
  EXPECT_TRUE(instance.IsDisabled(kAmount));
  EXPECT_EQ(instance.UpdateParamsUi(UiEvent::kUserChangedParameter, 5).err, PF_Err_NONE);
  EXPECT_FALSE(instance.IsDisabled(kAmount));
  ExpectClean(instance);
}

TEST_F(RenderTest, InstancesRunSideBySideWithoutKnowingOfEachOther) {
  On(PF_Cmd_RENDER, [](Call& call) {
    PF_Handle handles[4];
    for (PF_Handle& handle : handles) handle = call.in.utils->host_new_handle(100);
    const auto* suite = call.Acquire<PF_WorldSuite2>(kPFWorldSuite, 2);
    PF_EffectWorld world{};
    PF_Err err = suite->PF_NewWorld(call.in.effect_ref, 8, 8, 1, PF_PixelFormat_ARGB128, &world);
    err |= call.in.utils->copy(call.in.effect_ref, call.output, &world, nullptr, nullptr);
    err |= suite->PF_DisposeWorld(call.in.effect_ref, &world);
    call.in.pica_basicP->ReleaseSuite(kPFWorldSuite, 2);
    for (const PF_Handle handle : handles) call.in.utils->host_dispose_handle(handle);
    const PF_ParamDef amount = CheckOut(call, kAmount, 0, 30);
    return err != 0 ? err : static_cast<PF_Err>(amount.u.fs_d.value);
  });
  const auto effect = Make();
  std::vector<std::thread> threads;
  for (int n = 0; n < 4; ++n) {
    threads.emplace_back([&effect, n] {
      ParameterSet parameters(effect->sharedParameters());
      parameters.Set(kAmount, Track(10.0 + n));
      Instance instance(effect, parameters);
      Image output(32, 32, Depth::kFloat);
      Frame frame;
      frame.protocol = Protocol::kPlain;
      frame.output = &output;
      for (int i = 0; i < 300; ++i) ASSERT_EQ(instance.Render(frame).err, 10 + n);
      EXPECT_EQ(instance.ledger().lent(Ledger::Kind::kHandle), 1200u);
      ExpectClean(instance);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace minihost
