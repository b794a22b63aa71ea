// The two-step render: first the rectangles are agreed on, then the pixels are made.
//
// Rectangles are in the current render's pixels (downsampled), in the layer's coordinates.
#pragma once

#include <cstdint>

#include "hostapi/types.h"
#include "hostapi/worlds.h"

struct PF_RenderRequest {
  PF_LRect rect;  // what the host wants rendered
  std::int32_t field;
  std::int32_t channel_mask;
  PF_Boolean preserve_rgb_of_zero_alpha;
  PF_Boolean unused[3];
  std::int32_t reserved[4];
};

struct PF_CheckoutResult {
  PF_LRect result_rect;      // the part of the request that has pixels
  PF_LRect max_result_rect;  // everything the input could supply
};

struct PF_PreRenderCallbacks {
  /// Asks for a layer's pixels over `request->rect`; they come at the render step under `checkout_id`.
  /// `result` is filled on success only.
  PF_Err (*checkout_layer)(PF_ProgPtr effect_ref, std::int32_t index, std::int32_t checkout_id,
                           const PF_RenderRequest* request, std::int32_t what_time, std::int32_t time_step,
                           std::uint32_t time_scale, PF_CheckoutResult* result);
};

struct PF_PreRenderInput {
  PF_RenderRequest output_request;
};

struct PF_PreRenderOutput {
  PF_LRect result_rect;      // what the render step will produce
  PF_LRect max_result_rect;  // what it could produce at most
  std::int32_t flags;
  void* pre_render_data;  // the effect's own, carried to the render step of the same frame
  /// How the host frees `pre_render_data` that no render step consumed; null: it is a host handle.
  void (*delete_pre_render_data_func)(void* pre_render_data);
};

/// `extra` of PF_Cmd_SMART_PRE_RENDER.
struct PF_PreRenderExtra {
  PF_PreRenderInput* input;
  PF_PreRenderOutput* output;
  PF_PreRenderCallbacks* cb;
};

struct PF_SmartRenderCallbacks {
  /// Lends the pixels asked for under `checkout_id` until the command ends.  `*world` is null when the layer
  /// has none.
  PF_Err (*checkout_layer_pixels)(PF_ProgPtr effect_ref, std::int32_t checkout_id, PF_EffectWorld** world);

  /// Lends the world to render into until the command ends.
  PF_Err (*checkout_output)(PF_ProgPtr effect_ref, PF_EffectWorld** world);
};

struct PF_SmartRenderInput {
  PF_RenderRequest output_request;
  void* pre_render_data;  // from the pre-render step; an effect that frees it sets it to null
};

/// `extra` of PF_Cmd_SMART_RENDER.
struct PF_SmartRenderExtra {
  PF_SmartRenderInput* input;
  PF_SmartRenderCallbacks* cb;
};
