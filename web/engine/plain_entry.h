// The effect with its fast loop held back, for tests of one loop against the other.
#pragma once

#include <cstdint>

#include "minihost/effect.h"

namespace web {

/// Passes every command on, with a square root that is wrong where nobody but a careful effect looks: at the
/// numbers by which the fast loop finds out whether it may stand in for the plain one.
PF_Err PlainEntry(PF_Cmd cmd, PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* params[],
                  PF_LayerDef* output, void* extra);

/// Square roots asked of the host by way of PlainEntry so far.  The plain loop asks for each flake.
std::int64_t RootsAsked();

}  // namespace web
