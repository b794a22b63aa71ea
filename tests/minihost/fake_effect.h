// An effect whose every command a test can script.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "hostapi/hostapi.h"
#include "minihost/instance.h"

namespace minihost {

/// What the effect got with one command.
struct Call {
  PF_Cmd number;
  PF_InData& in;
  PF_OutData& out;
  PF_ParamDef** params;
  PF_LayerDef* output;
  void* extra;

  PF_PreRenderExtra& pre() const { return *static_cast<PF_PreRenderExtra*>(extra); }
  PF_SmartRenderExtra& smart() const { return *static_cast<PF_SmartRenderExtra*>(extra); }

  /// A suite that the test releases itself; null when the host has none.
  template <class Suite>
  const Suite* Acquire(const char* name, std::int32_t version) const {
    const void* suite = nullptr;
    return in.pica_basicP->AcquireSuite(name, version, &suite) == 0 ? static_cast<const Suite*>(suite)
                                                                    : nullptr;
  }
};

// The parameters that it declares, by index.
enum : int {
  kAmount = 1,
  kGroup,
  kSwitch,
  kCount,
  kGroupEnd,
  kTint,
  kCentre,
  kMode,
  kFixed,
  kParameterCount
};

PF_ParamDef FakeDefinition(int index);

class FakeEffectTest : public testing::Test {
 protected:
  using Handler = std::function<PF_Err(Call&)>;

  FakeEffectTest();
  ~FakeEffectTest() override;

  /// Commands without a handler succeed, except that the set-up declares the parameters above and the first
  /// smart step asks for the layer over the request.
  static void On(PF_Cmd number, Handler handler);

  static PF_Err Entry(PF_Cmd, PF_InData*, PF_OutData*, PF_ParamDef*[], PF_LayerDef*, void*);
  static std::shared_ptr<const Effect> Make() { return Effect::Linked(Entry); }

 private:
  static std::map<PF_Cmd, Handler> handlers_;
};

/// The message of the exception that `action` throws, which must be an `Error`.
template <class Error = std::invalid_argument, class Action>
std::string ErrorOf(Action&& action) {
  try {
    action();
  } catch (const Error& error) {
    return error.what();
  }
  ADD_FAILURE() << "nothing was thrown";
  return {};
}

}  // namespace minihost
