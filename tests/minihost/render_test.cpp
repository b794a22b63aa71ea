#include <algorithm>
#include <barrier>
#include <thread>

#include "minihost/picture/copy.h"
#include "tests/minihost/fake_effect.h"

namespace minihost {
namespace {

using RenderTest = FakeEffectTest;

Frame FrameOf(Protocol protocol, const Image* input, Image& output) {
  Frame frame;
  frame.protocol = protocol;
  frame.input = input;
  frame.output = &output;
  return frame;
}

double CheckOutAmount(Call& call, std::int32_t time, std::uint32_t scale) {
  PF_ParamDef def{};
  EXPECT_EQ(call.in.inter.checkout_param(call.in.effect_ref, kAmount, time, 1, scale, &def), PF_Err_NONE);
  EXPECT_EQ(call.in.inter.checkin_param(call.in.effect_ref, &def), PF_Err_NONE);
  return def.u.fs_d.value;
}

TEST_F(RenderTest, PlainProtocolBringsEveryRecord) {
  const auto effect = Make();
  ParameterSet parameters(effect->SharedParameters());
  parameters.Set(kAmount, Track({{-2, 1.0}, {98, 101.0}}));
  for (const Depth depth : {Depth::kBits8, Depth::kBits16, Depth::kFloat}) {
    const Image input(64, 40, depth);
    Image output(64, 40, depth);
    On(PF_Cmd_RENDER, [&](Call& call) {
      EXPECT_EQ(call.in.local_time_step, -100);
      EXPECT_EQ(call.in.shutter_angle, 65536 / 4);
      EXPECT_EQ(call.in.downsample_y.den, 3u);
      EXPECT_EQ(call.params[0]->u.ld.data, input.Data());
      EXPECT_EQ(call.params[kAmount]->u.fs_d.value, 10) << "at the current time";
      EXPECT_EQ(call.params[kCentre]->u.td.x_value, 32 << 16);
      EXPECT_EQ(CheckOutAmount(call, 25, 300), 5.5) << "counted in other ticks";
      call.in.utils->ansi.sprintf(call.out.return_msg, "%s\rline %d", "first", 2);
      return PF_Err{12345};
    });
    Instance instance(effect, parameters);
    Frame frame = FrameOf(Protocol::kPlain, &input, output);
    frame.time = 700;
    frame.timing = {3000, 50, -100, 90};
    frame.downsampleY = {1, 3};
    const RenderResult result = instance.Render(frame);
    EXPECT_EQ(result.err, 12345);
    EXPECT_EQ(result.message, "first\nline 2");
    ExpectClean(instance);
  }
}

TEST_F(RenderTest, SmartProtocolRendersWhatTheEffectPromisesOfATile) {
  PF_LRect promised{};
  On(PF_Cmd_SMART_PRE_RENDER, [&](Call& call) {
    PF_CheckoutResult layer{};
    PF_RenderRequest request = call.pre().input->output_request;
    request.rect = call.pre().output->result_rect = promised;
    call.pre().output->pre_render_data = call.in.utils->host_new_handle(4);  // the host's to free
    return call.pre().cb->checkout_layer(call.in.effect_ref, 0, 7, &request, 0, 1, 30, &layer);
  });
  On(PF_Cmd_SMART_RENDER, [](Call& call) {
    PF_EffectWorld *in = nullptr, *out = nullptr;
    EXPECT_EQ(call.smart().cb->checkout_layer_pixels(call.in.effect_ref, 7, &in), PF_Err_NONE);
    EXPECT_EQ(call.smart().cb->checkout_output(call.in.effect_ref, &out), PF_Err_NONE);
    return call.in.utils->copy(call.in.effect_ref, in, out, nullptr, nullptr);
  });
  for (const Depth depth : {Depth::kBits8, Depth::kBits16, Depth::kFloat}) {
    Instance instance(Make());
    Image input(64, 40, depth), output(20, 20, depth);
    for (std::size_t i = 0; i < 40 * input.RowBytes(); ++i) {
      input.Data()[i] = std::byte(i % 113 + 1);
    }
    Frame frame = FrameOf(Protocol::kSmart, &input, output);
    frame.tile = PF_LRect{10, 5, 30, 25};
    for (const PF_LRect& part : {*frame.tile, PF_LRect{12, 7, 20, 9}, PF_LRect{}}) {
      promised = part;
      EXPECT_EQ(instance.Render(frame).err, PF_Err_NONE);
      ExpectClean(instance);
      const Image want(20, 20, depth);
      CopyPixels(input.World(), part, want.World(),
                 {part.left - 10, part.top - 5, part.right - 10, part.bottom - 5}, depth);
      EXPECT_TRUE(std::equal(want.Data(), want.Data() + 20 * want.RowBytes(), output.Data()));
    }
    promised = {9, 5, 30, 25};
    EXPECT_THAT(instance.Render(frame).message, HasSubstr("more than the request"));
  }
}

TEST_F(RenderTest, HooksStopTheRenderAndTheirExceptionsComeBack) {
  Image output(8, 6, Depth::kBits8);
  Frame frame = FrameOf(Protocol::kPlain, nullptr, output);
  On(PF_Cmd_RENDER, [](Call& call) { return call.in.inter.progress(call.in.effect_ref, 3, 10); });
  Instance instance(Make());
  frame.hooks.progress = [](int current, int) { return current == 3 ? Verdict::kStop : Verdict::kContinue; };
  EXPECT_EQ(instance.Render(frame).err, kRenderStopped);
  frame.hooks.progress = [](int, int) -> Verdict { throw std::runtime_error("disk full"); };
  EXPECT_EQ(ErrorOf([&] { instance.Render(frame); }), "disk full");
}

TEST_F(RenderTest, InstancesRunSideBySideWithoutKnowingOfEachOther) {
  std::barrier both(2);  // so that the commands overlap
  On(PF_Cmd_RENDER, [&](Call& call) {
    both.arrive_and_wait();
    return static_cast<PF_Err>(CheckOutAmount(call, 0, 30));
  });
  const auto effect = Make();
  const auto run = [&effect](int amount) {
    ParameterSet parameters(effect->SharedParameters());
    parameters.Set(kAmount, Track(1.0 * amount));
    Instance instance(effect, parameters);
    Image output(32, 32, Depth::kFloat);
    const Frame frame = FrameOf(Protocol::kPlain, nullptr, output);
    for (int i = 0; i < 100; ++i) {
      EXPECT_EQ(instance.Render(frame).err, amount);
    }
    ExpectClean(instance);
  };
  const std::jthread other(run, 10);
  run(20);
}

}  // namespace
}  // namespace minihost
