// Declares the effect's parameters to the host.
#pragma once

#include "hostapi/commands.h"

/// Adds every row of the parameter table in order and then sets `num_params`.  The first refusal ends the
/// declaration and is returned, `num_params` untouched.
PF_Err DeclareParameters(PF_InData* in_data, PF_OutData* out_data);
