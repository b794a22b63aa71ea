#include "web/engine/plain_entry.h"

#include <cmath>

namespace web {
namespace {

std::int64_t rootsAsked = 0;

// One of the roots that are hardest to round: no single-precision number has this square, so no flake asks.
double RootButOne(double square) {
  constexpr double kHardSquare = 0x1.0000000000001p+0;
  ++rootsAsked;
  return square == kHardSquare ? kHardSquare : std::sqrt(square);
}

}  // namespace

PF_Err PlainEntry(PF_Cmd cmd, PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* params[],
                  PF_LayerDef* output, void* extra) {
  PF_UtilCallbacks utils = *in_data->utils;
  utils.ansi.sqrt = RootButOne;
  PF_InData changed = *in_data;
  changed.utils = &utils;
  return MainEntry(cmd, &changed, out_data, params, output, extra);
}

std::int64_t RootsAsked() {
  return rootsAsked;
}

}  // namespace web
