// An effect whose every command a test can script.
#pragma once

#include <gmock/gmock.h>

#include <cstring>
#include <functional>
#include <map>

#include "hostapi/hostapi.h"
#include "minihost/instance.h"

namespace minihost {

using testing::HasSubstr;

/// What the effect got with one command.
struct Call {
  PF_InData& in;
  PF_OutData& out;
  PF_ParamDef** params;
  PF_LayerDef* output;
  void* extra;

  PF_PreRenderExtra& pre() const { return *static_cast<PF_PreRenderExtra*>(extra); }
  PF_SmartRenderExtra& smart() const { return *static_cast<PF_SmartRenderExtra*>(extra); }
};

// The parameters that it declares, by index.
enum : int { kAmount = 1, kGroup, kSwitch, kCount, kGroupEnd, kTint, kCentre, kMode, kParameterCount };

/// Their declarations, the input layer first.
inline std::vector<PF_ParamDef> FakeDefinitions() {
  std::vector<PF_ParamDef> all(kParameterCount);
  const auto declare = [&](std::size_t index, PF_ParamType type, const char* name) -> PF_ParamDef& {
    all[index].param_type = type;
    std::strcpy(all[index].name, name);
    return all[index];
  };
  declare(kAmount, PF_Param_FLOAT_SLIDER, "Amount").u.fs_d = {2.5, 0.1f, 200, 1, 50, 2.5f, 0.05f, 2, 0, 0};
  declare(kGroup, PF_Param_GROUP_START, "Group");
  declare(kSwitch, PF_Param_CHECKBOX, "").u.bd.u.nameptr = "Switch";
  declare(kCount, PF_Param_SLIDER, "Count").u.sd.valid_max = 10000;
  declare(kGroupEnd, PF_Param_GROUP_END, "");
  declare(kTint, PF_Param_COLOR, "Tint").u.cd.dephault = {255, 10, 20, 30};
  declare(kCentre, PF_Param_POINT, "Centre").u.td.x_dephault = 50 << 16;
  declare(kMode, PF_Param_POPUP, "Mode").u.pd = {2, 2, 2, {"Plain|Light"}};
  all[kMode].flags = PF_ParamFlag_CANNOT_TIME_VARY;
  return all;
}

using Handler = std::function<PF_Err(Call&)>;

class FakeEffectTest : public testing::Test {
 protected:
  /// Commands without a handler succeed, except that the set-up declares the parameters above.
  FakeEffectTest() {
    handlers_.clear();
    On(PF_Cmd_PARAMS_SETUP, [](Call& call) {
      PF_Err err = PF_Err_NONE;
      for (PF_ParamDef& definition : FakeDefinitions()) {
        if (call.out.num_params++ > 0) {
          err |= call.in.inter.add_param(call.in.effect_ref, -1, &definition);
        }
      }
      return err;
    });
  }

  static void On(PF_Cmd number, Handler handler) { handlers_[number] = std::move(handler); }

  static PF_Err Entry(PF_Cmd number, PF_InData* in, PF_OutData* out, PF_ParamDef* params[],
                      PF_LayerDef* output, void* extra) {
    const auto handler = handlers_.find(number);
    Call call{*in, *out, params, output, extra};
    return handler == handlers_.end() ? PF_Err_NONE : handler->second(call);
  }
  static std::shared_ptr<const Effect> Make() { return Effect::Linked(Entry); }

  static void ExpectClean(const Instance& instance) {
    EXPECT_THAT(instance.HostLedger().Missing(), testing::IsEmpty());
    EXPECT_THAT(instance.HostLedger().Faults(), testing::IsEmpty());
  }

 private:
  inline static std::map<PF_Cmd, Handler> handlers_;
};

/// What the exception says that `action` throws.
inline std::string ErrorOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const std::exception& error) {
    return error.what();
  }
  return "nothing was thrown";
}

}  // namespace minihost
