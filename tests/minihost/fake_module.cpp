// The smallest effect that can be loaded: a version, an about text, one parameter whose label lives in here.
#include <cstring>

#include "hostapi/commands.h"

PF_Err MainEntry(PF_Cmd cmd, PF_InData* in_data, PF_OutData* out_data, PF_ParamDef*[], PF_LayerDef*, void*) {
  if (cmd == PF_Cmd_GLOBAL_SETUP) out_data->my_version = (3u << 19) | (2u << 15) | (1u << 11) | (3u << 9) | 7;
  if (cmd == PF_Cmd_ABOUT) std::strcpy(out_data->return_msg, "a module\rof two lines");
  if (cmd == PF_Cmd_PARAMS_SETUP) {
    PF_ParamDef def{};
    def.param_type = PF_Param_CHECKBOX;
    def.uu.id = 9;
    def.u.bd.dephault = 1;
    def.u.bd.u.nameptr = "In The Module";
    out_data->num_params = 2;
    return in_data->inter.add_param(in_data->effect_ref, -1, &def);
  }
  return PF_Err_NONE;
}
