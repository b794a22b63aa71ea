// What one command works with: the host's records, the worlds, and the suites acquired so far.
#pragma once

#include "effect/host/suite_cache.h"
#include "hostapi/commands.h"
#include "hostapi/smart_render.h"

/// Built on the entry's stack for one command and destroyed when it returns; owns `suites` (and through them
/// what was acquired) and borrows everything else.
struct Fxenv {
  /// `input` and `smartExtra` start null; the render's protocol sets them before any pixel work.  Throws
  /// PF_Err_BAD_CALLBACK_PARAM when the host has no basic suite.
  Fxenv(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef** params, PF_LayerDef* output);
  Fxenv(const Fxenv&) = delete;
  Fxenv& operator=(const Fxenv&) = delete;

  /// The output's pixel format, asked of the host once.  A host without the second version of the world suite
  /// is judged by the output's flags, where a float world cannot be told.  PF_PixelFormat_INVALID without an
  /// output, or when the host has no answer.
  PF_PixelFormat PixelFormat();

  PF_InData* inData;
  PF_OutData* outData;
  PF_ParamDef** params;             // null for commands that have none
  PF_LayerDef* output;              // null for commands without pixels
  PF_LayerDef* input;               // the layer's pixels; null for commands without
  PF_SmartRenderExtra* smartExtra;  // null in the plain protocol
  AEGP_SuiteHandler suites;
  PF_PixelFormat pixelFormat;  // PF_PixelFormat_INVALID until asked
};
