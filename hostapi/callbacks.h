// The functions that the host lends with every command.
//
// All of them are called on the thread that the host called the effect on, and only until that command
// returns.  A status of 0 is success; any other status is the host's and is returned unchanged.
#pragma once

#include <cstdint>

#include "hostapi/params.h"
#include "hostapi/types.h"
#include "hostapi/worlds.h"

/// The C library as the host provides it.  Numbers are double precision; `sqrt` rounds correctly.
struct PF_ANSICallbacks {
  double (*cos)(double radians);
  double (*sqrt)(double value);
  double (*tan)(double radians);
  int (*sprintf)(char* destination, const char* format, ...);
  char* (*strcpy)(char* destination, const char* source);
};

struct PF_UtilCallbacks {
  PF_ANSICallbacks ansi;

  /// Sets every pixel of `rect` (null: the whole world) to `color` (null: transparent black).
  PF_Err (*fill)(PF_ProgPtr effect_ref, const PF_Pixel* color, const PF_LRect* rect, PF_EffectWorld* world);

  /// Copies `src_rect` of `src` onto `dst_rect` of `dst`, scaling when their sizes differ; a null rectangle
  /// is the whole world.  Both worlds have the same depth.  The scaling filter is the host's choice.
  PF_Err (*copy)(PF_ProgPtr effect_ref, PF_EffectWorld* src, PF_EffectWorld* dst, const PF_LRect* src_rect,
                 const PF_LRect* dst_rect);

  /// A new relocatable block of `size` bytes, contents undefined, owned by the caller; null when there is no
  /// memory.  The pointer itself may be null in a host without handles; then `host_dispose_handle` is too.
  PF_Handle (*host_new_handle)(std::uint64_t size);

  /// Frees a block made by `host_new_handle`.
  void (*host_dispose_handle)(PF_Handle handle);
};

struct PF_InteractCallbacks {
  /// Fills `def` with the parameter at `index` as it stands at `what_time`, in ticks of `time_scale` a
  /// second; `time_step` is the caller's spacing between samples.  On success the definition is on loan
  /// until `checkin_param`; on failure nothing is lent and `def` holds nothing of use.
  PF_Err (*checkout_param)(PF_ProgPtr effect_ref, std::int32_t index, std::int32_t what_time,
                           std::int32_t time_step, std::uint32_t time_scale, PF_ParamDef* def);

  /// Hands back a definition that `checkout_param` lent.
  PF_Err (*checkin_param)(PF_ProgPtr effect_ref, PF_ParamDef* def);

  /// Declares a parameter at `index`; -1 appends.  The host copies the record during the call.
  PF_Err (*add_param)(PF_ProgPtr effect_ref, std::int32_t index, PF_ParamDef* def);

  /// Non-zero when the user has cancelled the render.
  PF_Err (*abort)(PF_ProgPtr effect_ref);

  /// Reports `current` of `total` steps.  Non-zero when the user has interrupted the render.
  PF_Err (*progress)(PF_ProgPtr effect_ref, std::int32_t current, std::int32_t total);
};
