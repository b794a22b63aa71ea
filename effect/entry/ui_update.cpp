#include "effect/entry/ui_update.h"

#include "effect/host/parameter_index.h"

namespace {

bool HasTwirly(PF_ParamType type) {
  switch (type) {
    case PF_Param_LAYER:
    case PF_Param_CHECKBOX:
    case PF_Param_COLOR:
    case PF_Param_POINT:
    case PF_Param_POPUP:
    case PF_Param_ARBITRARY_DATA:
    case PF_Param_PATH:
      return false;
    default:
      return true;
  }
}

}  // namespace

PF_Err UpdateEmbedDepthUi(Fxenv& env) {
  PF_ParamDef def = *env.params[kEmbedDepth];
  if (env.params[kCompositeWithOriginal]->u.bd.value != 0) {
    def.ui_flags &= ~PF_PUI_DISABLED;
  } else {
    def.ui_flags |= PF_PUI_DISABLED;
    if (HasTwirly(def.param_type)) {
      def.flags |= PF_ParamFlag_COLLAPSE_TWIRLY;
    }
  }
  return env.suites.ParamUtilsSuite1()->PF_UpdateParamUI(env.inData->effect_ref, kEmbedDepth, &def);
}
