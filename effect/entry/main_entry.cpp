// The effect's front door: one function for every command of the host, and the one place where exceptions
// end.
#include <new>

#include "effect/entry/about.h"
#include "effect/entry/parameter_setup.h"
#include "effect/entry/ui_update.h"
#include "effect/host/fxenv.h"
#include "effect/host/smart_protocol.h"
#include "effect/render/frame/sequence_state.h"
#include "hostapi/hostapi.h"

namespace {

constexpr PF_OutFlags kOutFlags = PF_OutFlag_WIDE_TIME_INPUT | PF_OutFlag_NON_PARAM_VARY |
                                  PF_OutFlag_USE_OUTPUT_EXTENT | PF_OutFlag_DEEP_COLOR_AWARE |
                                  PF_OutFlag_SEND_UPDATE_PARAMS_UI;
constexpr PF_OutFlags2 kOutFlags2 = PF_OutFlag2_SUPPORTS_SMART_RENDER | PF_OutFlag2_FLOAT_COLOR_AWARE;
static_assert(kOutFlags == 0x6000046 && kOutFlags2 == 0x1400);

// Runs one command.  What it acquires is released before an exception leaves it.
PF_Err Dispatch(PF_Cmd cmd, PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* params[],
                PF_LayerDef* output, void* extra) {
  switch (cmd) {
    case PF_Cmd_ABOUT:
      ComposeAboutText(in_data, out_data);
      return PF_Err_NONE;
    case PF_Cmd_GLOBAL_SETUP:
      out_data->my_version = kPackedVersion;
      out_data->out_flags |= kOutFlags;
      out_data->out_flags2 |= kOutFlags2;
      return PF_Err_NONE;
    case PF_Cmd_PARAMS_SETUP:
      return DeclareParameters(in_data, out_data);
    case PF_Cmd_SEQUENCE_SETUP:
      return SequenceSetup(in_data, out_data);
    case PF_Cmd_SEQUENCE_SETDOWN:
      return SequenceSetdown(in_data, out_data);
    case PF_Cmd_RENDER: {
      Fxenv env(in_data, out_data, params, output);
      env.input = &params[0]->u.ld;
      return RenderSmart(env);
    }
    case PF_Cmd_USER_CHANGED_PARAM:
    case PF_Cmd_UPDATE_PARAMS_UI: {
      Fxenv env(in_data, out_data, params, nullptr);
      return UpdateEmbedDepthUi(env);
    }
    case PF_Cmd_SMART_PRE_RENDER:
      return PreRender(in_data, out_data, static_cast<PF_PreRenderExtra*>(extra));
    case PF_Cmd_SMART_RENDER: {
      Fxenv env(in_data, out_data, params, output);
      return SmartRender(env, static_cast<PF_SmartRenderExtra*>(extra));
    }
    default:
      return PF_Err_NONE;
  }
}

}  // namespace

PF_Err MainEntry(PF_Cmd cmd, PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* params[],
                 PF_LayerDef* output, void* extra) {
  try {
    return Dispatch(cmd, in_data, out_data, params, output, extra);
  } catch (const std::bad_alloc&) {
    return PF_Err_OUT_OF_MEMORY;
  } catch (PF_Err error) {
    return error;
  } catch (...) {
    return PF_Err_BAD_CALLBACK_PARAM;
  }
}
