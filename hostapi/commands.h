// The commands, the two records that come with each of them, and the effect's one entry.
#pragma once

#include <cstdint>

#include "hostapi/callbacks.h"
#include "hostapi/params.h"
#include "hostapi/suites.h"
#include "hostapi/types.h"
#include "hostapi/worlds.h"

using PF_Cmd = std::int32_t;
inline constexpr PF_Cmd PF_Cmd_ABOUT = 0;
inline constexpr PF_Cmd PF_Cmd_GLOBAL_SETUP = 1;
inline constexpr PF_Cmd PF_Cmd_GLOBAL_SETDOWN = 3;
inline constexpr PF_Cmd PF_Cmd_PARAMS_SETUP = 4;
inline constexpr PF_Cmd PF_Cmd_SEQUENCE_SETUP = 5;
inline constexpr PF_Cmd PF_Cmd_SEQUENCE_RESETUP = 6;
inline constexpr PF_Cmd PF_Cmd_SEQUENCE_FLATTEN = 7;
inline constexpr PF_Cmd PF_Cmd_SEQUENCE_SETDOWN = 8;
inline constexpr PF_Cmd PF_Cmd_DO_DIALOG = 9;
inline constexpr PF_Cmd PF_Cmd_FRAME_SETUP = 10;
inline constexpr PF_Cmd PF_Cmd_RENDER = 11;
inline constexpr PF_Cmd PF_Cmd_FRAME_SETDOWN = 12;
inline constexpr PF_Cmd PF_Cmd_USER_CHANGED_PARAM = 13;
inline constexpr PF_Cmd PF_Cmd_UPDATE_PARAMS_UI = 14;
inline constexpr PF_Cmd PF_Cmd_SMART_PRE_RENDER = 23;
inline constexpr PF_Cmd PF_Cmd_SMART_RENDER = 24;

using PF_OutFlags = std::int32_t;
inline constexpr PF_OutFlags PF_OutFlag_WIDE_TIME_INPUT = 0x2;         // reads parameters at other times
inline constexpr PF_OutFlags PF_OutFlag_NON_PARAM_VARY = 0x4;          // the picture changes with time alone
inline constexpr PF_OutFlags PF_OutFlag_USE_OUTPUT_EXTENT = 0x40;      // honours extent_hint
inline constexpr PF_OutFlags PF_OutFlag_DEEP_COLOR_AWARE = 0x2000000;  // renders 16 bits
inline constexpr PF_OutFlags PF_OutFlag_SEND_UPDATE_PARAMS_UI = 0x4000000;  // wants command 14

using PF_OutFlags2 = std::int32_t;
inline constexpr PF_OutFlags2 PF_OutFlag2_SUPPORTS_SMART_RENDER = 0x400;
inline constexpr PF_OutFlags2 PF_OutFlag2_FLOAT_COLOR_AWARE = 0x1000;

/// What the host tells.  Borrowed by the effect for one command.
struct PF_InData {
  PF_InteractCallbacks inter;
  PF_UtilCallbacks* utils;
  PF_ProgPtr effect_ref;
  const SPBasicSuite* pica_basicP;

  // Times are counts of ticks; time_scale is ticks a second.
  std::int32_t current_time;     // in the layer's time
  std::int32_t time_step;        // duration of one rendered frame
  std::int32_t local_time_step;  // duration of one frame of the layer; negative when it plays backwards
  std::uint32_t time_scale;

  PF_Fixed shutter_angle;         // fraction of a frame that the shutter is open; 1.0 is 360 degrees
  PF_RationalScale downsample_x;  // render pixels for each full-resolution pixel
  PF_RationalScale downsample_y;
  PF_RationalScale pixel_aspect_ratio;  // a pixel's width over its height
};

/// What the effect answers.  The host keeps `sequence_data` between the commands of one instance and hands
/// it in again with each; the block belongs to the effect, which frees it at PF_Cmd_SEQUENCE_SETDOWN.
struct PF_OutData {
  std::uint32_t my_version;  // bits 0-8 build, 9-10 stage, 11-14 fix level, 15-18 subversion, 19-21 version
  std::int32_t num_params;   // the input layer included
  PF_Handle sequence_data;
  PF_OutFlags out_flags;
  PF_OutFlags2 out_flags2;
  char return_msg[256];  // zero-terminated, carriage return between lines
};

/// The effect's only exported function.  `params` and `output` come with the render commands (and `params`
/// with the interface commands), `extra` with the two steps of the smart render; others may be null.
extern "C" __attribute__((visibility("default"))) PF_Err MainEntry(PF_Cmd cmd, PF_InData* in_data,
                                                                   PF_OutData* out_data,
                                                                   PF_ParamDef* params[], PF_LayerDef* output,
                                                                   void* extra);
