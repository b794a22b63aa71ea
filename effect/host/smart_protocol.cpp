#include "effect/host/smart_protocol.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "effect/host/parameter_index.h"
#include "effect/host/pre_render_geometry.h"
#include "effect/render/render_pass.h"

namespace {

constexpr std::int32_t kInputCheckoutId = 0;

bool IsEmpty(const PF_LRect& rect) {
  return rect.left >= rect.right || rect.top >= rect.bottom;
}

// Clips the result to the request; an empty result becomes the whole request, an empty request clips nothing.
void ClipToRequest(const PF_LRect& request, PF_LRect& result) {
  if (IsEmpty(result)) {
    result = request;
  } else if (!IsEmpty(request)) {
    result = {std::max(result.left, request.left), std::max(result.top, request.top),
              std::min(result.right, request.right), std::min(result.bottom, request.bottom)};
  }
}

// Differences of host coordinates are taken in double precision, where no pair of them overflows.
double Distance(std::int32_t from, std::int32_t to) {
  return static_cast<double>(to) - from;
}

PreRenderGeometry GeometryOf(const PF_CheckoutResult& input) {
  const PF_LRect& extent = input.max_result_rect;
  return {Distance(extent.left, extent.right), Distance(extent.top, extent.bottom),
          Distance(extent.left, input.result_rect.left), Distance(extent.top, input.result_rect.top)};
}

}  // namespace

PF_Err PreRender(PF_InData* in_data, PF_OutData* /*out_data*/, PF_PreRenderExtra* extra) {
  PF_RenderRequest request = extra->input->output_request;
  request.preserve_rgb_of_zero_alpha = 0;
  PF_CheckoutResult inResult = {};
  const PF_Err error =
      extra->cb->checkout_layer(in_data->effect_ref, kInputLayer, kInputCheckoutId, &request,
                                in_data->current_time, in_data->time_step, in_data->time_scale, &inResult);

  const AEGP_SuiteHandler suites(in_data->pica_basicP);
  const PF_HandleSuite1& handles = *suites.HandleSuite1();
  const auto dispose = [&handles](PF_Handle handle) {
    try {
      handles.host_dispose_handle(handle);
    } catch (...) {  // on the way out, where nothing may be thrown
    }
  };
  // A failed check-out is followed by no render, which would take the geometry.
  std::unique_ptr<void*, decltype(dispose)> handle(
      error == PF_Err_NONE ? handles.host_new_handle(sizeof(PreRenderGeometry)) : nullptr, dispose);
  void* const memory = handle != nullptr ? handles.host_lock_handle(handle.get()) : nullptr;
  if (memory != nullptr) {
    const PreRenderGeometry geometry = GeometryOf(inResult);
    std::memcpy(memory, &geometry, sizeof geometry);
    extra->output->pre_render_data = handle.release();
  }

  UnionLRect(&inResult.result_rect, &extra->output->result_rect);
  UnionLRect(&inResult.max_result_rect, &extra->output->max_result_rect);
  ClipToRequest(request.rect, extra->output->result_rect);
  return error;
}

void UnionLRect(const PF_LRect* src, PF_LRect* dst) {
  if (IsEmpty(*dst)) {
    *dst = *src;
  } else if (!IsEmpty(*src)) {
    *dst = {std::min(dst->left, src->left), std::min(dst->top, src->top), std::max(dst->right, src->right),
            std::max(dst->bottom, src->bottom)};
  }
}

PF_Err SmartRender(Fxenv& env, PF_SmartRenderExtra* extra) {
  const PF_ProgPtr effect = env.inData->effect_ref;
  PF_EffectWorld* input = nullptr;
  if (const PF_Err error = extra->cb->checkout_layer_pixels(effect, kInputCheckoutId, &input);
      error != PF_Err_NONE) {
    return error;
  }
  PF_EffectWorld* output = nullptr;
  if (const PF_Err error = extra->cb->checkout_output(effect, &output); error != PF_Err_NONE) {
    return error;
  }
  if (input == nullptr || output == nullptr) {
    return PF_Err_NONE;
  }
  env.input = input;
  env.smartExtra = extra;
  env.output = output;
  if (input->width <= 0 || input->height <= 0 || output->width <= 0 || output->height <= 0) {
    return PF_Err_NONE;
  }
  return RenderSmart(env);
}

PF_Err RenderSmart(Fxenv& env) {
  switch (env.PixelFormat()) {
    case PF_PixelFormat_ARGB32:
      return RenderThisSmart<PF_Pixel>(env);
    case PF_PixelFormat_ARGB64:
      return RenderThisSmart<PF_Pixel16>(env);
    case PF_PixelFormat_ARGB128:
      return RenderThisSmart<PF_PixelFloat>(env);
    default:
      return PF_Err_BAD_CALLBACK_PARAM;
  }
}
