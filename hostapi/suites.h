// Services that the host lends by name and version.
//
// A suite stays valid from a successful AcquireSuite to the matching ReleaseSuite under the same name and
// version.  Operations keep the order given here, which is how a host of another language finds them.
#pragma once

#include <cstdint>

#include "hostapi/params.h"
#include "hostapi/types.h"
#include "hostapi/worlds.h"

struct SPBasicSuite {
  /// 0 and a table of functions in `*suite`, or any other status when the host has no such suite.
  std::int32_t (*AcquireSuite)(const char* name, std::int32_t version, const void** suite);
  std::int32_t (*ReleaseSuite)(const char* name, std::int32_t version);
};

inline constexpr char kPFHandleSuite[] = "PF Handle Suite";
inline constexpr char kPFWorldSuite[] = "PF World Suite";
inline constexpr char kPFParamUtilsSuite[] = "PF Param Utils Suite";
inline constexpr char kPFSampling8Suite[] = "PF Sampling8 Suite";
inline constexpr char kPFSampling16Suite[] = "PF Sampling16 Suite";
inline constexpr char kPFSamplingFloatSuite[] = "PF SamplingFloat Suite";

/// "PF Handle Suite", version 1: relocatable blocks.
struct PF_HandleSuite1 {
  /// Owned by the caller; null when there is no memory.
  PF_Handle (*host_new_handle)(std::uint64_t size);
  /// The block's first byte, fixed in place until unlocked or disposed of; null on failure.
  void* (*host_lock_handle)(PF_Handle handle);
  void (*host_unlock_handle)(PF_Handle handle);
  /// Frees the block, locked or not.
  void (*host_dispose_handle)(PF_Handle handle);
};

using PF_NewWorldFlags = std::int32_t;
inline constexpr PF_NewWorldFlags PF_NewWorldFlag_CLEAR_PIXELS = 1;  // start transparent black
inline constexpr PF_NewWorldFlags PF_NewWorldFlag_DEEP_PIXELS = 2;   // 16 bits a channel

/// "PF World Suite", version 1: images of 8 and 16 bits.
struct PF_WorldSuite1 {
  /// Fills `world`; its pixels belong to the caller until `dispose_world`.  Nothing is owned on failure.
  PF_Err (*new_world)(PF_ProgPtr effect_ref, std::int32_t width, std::int32_t height, PF_NewWorldFlags flags,
                      PF_EffectWorld* world);
  PF_Err (*dispose_world)(PF_ProgPtr effect_ref, PF_EffectWorld* world);
};

/// "PF World Suite", version 2: images of every depth.
struct PF_WorldSuite2 {
  /// As version 1's, with the depth named by its format; `clear_pixB` other than 0 clears.
  PF_Err (*PF_NewWorld)(PF_ProgPtr effect_ref, std::int32_t width, std::int32_t height, PF_Boolean clear_pixB,
                        PF_PixelFormat pixel_format, PF_EffectWorld* world);
  PF_Err (*PF_DisposeWorld)(PF_ProgPtr effect_ref, PF_EffectWorld* world);
  /// Writes the format of any world that the host made; leaves it alone on failure.
  PF_Err (*PF_GetPixelFormat)(const PF_EffectWorld* world, PF_PixelFormat* pixel_format);
};

/// "PF Param Utils Suite", version 1: the look of parameters in the host's interface.
struct PF_ParamUtilsSuite1 {
  /// Takes over `ui_flags` and `flags` of `def` for the parameter at `index`.  Values do not change.
  PF_Err (*PF_UpdateParamUI)(PF_ProgPtr effect_ref, std::int32_t index, const PF_ParamDef* def);
};

/// What a sampler reads from.  Members that the caller leaves at zero mean a plain single-point sample.
struct PF_SampPB {
  PF_LayerDef* src;
};

/// "PF Sampling8 Suite", version 1.  Positions are 16.16 pixels of `params->src`; whole numbers fall on pixel
/// centres, so (0, 0) is exactly the first pixel.
struct PF_Sampling8Suite1 {
  /// The nearest pixel.
  PF_Err (*nn_sample)(PF_ProgPtr effect_ref, PF_Fixed x, PF_Fixed y, const PF_SampPB* params, PF_Pixel* dst);
  /// Interpolated between the four pixels around the position.
  PF_Err (*subpixel_sample)(PF_ProgPtr effect_ref, PF_Fixed x, PF_Fixed y, const PF_SampPB* params,
                            PF_Pixel* dst);
};

/// "PF Sampling16 Suite", version 1.
struct PF_Sampling16Suite1 {
  PF_Err (*nn_sample16)(PF_ProgPtr effect_ref, PF_Fixed x, PF_Fixed y, const PF_SampPB* params,
                        PF_Pixel16* dst);
  PF_Err (*subpixel_sample16)(PF_ProgPtr effect_ref, PF_Fixed x, PF_Fixed y, const PF_SampPB* params,
                              PF_Pixel16* dst);
};

/// "PF SamplingFloat Suite", version 1.
struct PF_SamplingFloatSuite1 {
  PF_Err (*nn_sample_float)(PF_ProgPtr effect_ref, PF_Fixed x, PF_Fixed y, const PF_SampPB* params,
                            PF_PixelFloat* dst);
  PF_Err (*subpixel_sample_float)(PF_ProgPtr effect_ref, PF_Fixed x, PF_Fixed y, const PF_SampPB* params,
                                  PF_PixelFloat* dst);
};
