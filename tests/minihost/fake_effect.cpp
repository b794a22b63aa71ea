#include "fake_effect.h"

#include <cstring>
#include <utility>

namespace minihost {
namespace {

PF_Err DeclareAll(Call& call) {
  for (int index = 1; index < kParameterCount; ++index) {
    PF_ParamDef definition = FakeDefinition(index);
    if (const PF_Err err = call.in.inter.add_param(call.in.effect_ref, -1, &definition)) return err;
    std::memset(&definition, 0xEE, sizeof definition);  // the host has its own copy
  }
  call.out.num_params = kParameterCount;
  return PF_Err_NONE;
}

PF_Err AskForLayer(Call& call) {
  PF_PreRenderExtra& extra = call.pre();
  PF_CheckoutResult result{};
  const PF_Err err =
      extra.cb->checkout_layer(call.in.effect_ref, 0, 0, &extra.input->output_request, call.in.current_time,
                               call.in.time_step, call.in.time_scale, &result);
  extra.output->result_rect = result.result_rect;
  extra.output->max_result_rect = result.max_result_rect;
  return err;
}

}  // namespace

PF_ParamDef FakeDefinition(int index) {
  PF_ParamDef def{};
  def.uu.id = index + 100;
  const auto name = [&](PF_ParamType type, const char* text) {
    def.param_type = type;
    std::strcpy(def.name, text);
  };
  switch (index) {
    case kAmount:
    case kFixed:
      name(PF_Param_FLOAT_SLIDER, index == kAmount ? "Amount" : "Fixed");
      def.flags = index == kAmount ? PF_ParamFlag_COLLAPSE_TWIRLY : PF_ParamFlag_CANNOT_TIME_VARY;
      def.u.fs_d = {2.5, 0.1f, 200, 1, 50, 2.5f, 0.05f, 2, 0, 0};
      break;
    case kGroup:
      name(PF_Param_GROUP_START, "Group");
      break;
    case kGroupEnd:
      def.param_type = PF_Param_GROUP_END;
      break;
    case kSwitch:
      def.param_type = PF_Param_CHECKBOX;
      def.u.bd.dephault = 1;
      def.u.bd.u.nameptr = "Switch";
      break;
    case kCount:
      name(PF_Param_SLIDER, "Count");
      def.u.sd.valid_max = 10000;
      def.u.sd.slider_max = 1000;
      def.u.sd.dephault = 7;
      break;
    case kTint:
      name(PF_Param_COLOR, "Tint");
      def.u.cd.dephault = {255, 10, 20, 30};
      break;
    case kCentre:
      name(PF_Param_POINT, "Centre");
      def.u.td.x_dephault = def.u.td.y_dephault = 50 << 16;
      break;
    case kMode:
      name(PF_Param_POPUP, "Mode");
      def.u.pd.num_choices = 2;
      def.u.pd.dephault = 2;
      def.u.pd.u.namesptr = "Plain|Light";
      break;
  }
  return def;
}

std::map<PF_Cmd, FakeEffectTest::Handler> FakeEffectTest::handlers_;

FakeEffectTest::FakeEffectTest() {
  handlers_ = {{PF_Cmd_PARAMS_SETUP, DeclareAll}, {PF_Cmd_SMART_PRE_RENDER, AskForLayer}};
}

FakeEffectTest::~FakeEffectTest() {
  handlers_.clear();
}

void FakeEffectTest::On(PF_Cmd number, Handler handler) {
  handlers_[number] = std::move(handler);
}

PF_Err FakeEffectTest::Entry(PF_Cmd number, PF_InData* in, PF_OutData* out, PF_ParamDef* params[],
                             PF_LayerDef* output, void* extra) {
  const auto handler = handlers_.find(number);
  if (handler == handlers_.end()) return PF_Err_NONE;
  Call call{number, *in, *out, params, output, extra};
  return handler->second(call);
}

}  // namespace minihost
