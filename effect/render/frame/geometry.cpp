#include "effect/render/frame/geometry.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "effect/host/pre_render_geometry.h"

PF_Err SetFrameExtent(Fxenv& env, FrameField& frame) {
  const FX_PARc& scale = frame.scale;
  if (env.smartExtra != nullptr) {
    void*& preRenderData = env.smartExtra->input->pre_render_data;
    if (preRenderData == nullptr) {
      return PF_Err_OUT_OF_MEMORY;
    }
    const PF_HandleSuite1* const handles = env.suites.HandleSuite1();
    // Out of the record before it is disposed of, so that nobody finds a handle there that is gone.
    const auto handle = static_cast<PF_Handle>(std::exchange(preRenderData, nullptr));
    PreRenderGeometry geometry;
    std::memcpy(&geometry, *handle, sizeof geometry);
    handles->host_dispose_handle(handle);

    frame.frameWidth = geometry.extentWidth * scale.xScaleInv;
    frame.frameHeight = geometry.extentHeight * scale.yScaleInv;
    frame.originX = -static_cast<float>(geometry.resultOffsetX * scale.xScaleInv);
    frame.originY = -static_cast<float>(geometry.resultOffsetY * scale.yScaleInv);
  } else {
    frame.frameWidth = env.output->width * scale.xScaleInv;
    frame.frameHeight = env.output->height * scale.yScaleInv;
    frame.originX = 0.0f;
    frame.originY = 0.0f;
  }
  frame.halfFrameWidth = 0.5 * frame.frameWidth;
  frame.halfFrameHeight = 0.5 * frame.frameHeight;
  return PF_Err_NONE;
}

void SetFieldGeometry(FrameField& frame, const ViewSamples& view) {
  const FX_PARc& scale = frame.scale;
  frame.frameMax = std::max(frame.frameWidth, frame.frameHeight);
  const double farDistance = frame.frameMax + frame.sceneDepth;
  frame.fieldWidth = (frame.frameWidth * farDistance) / frame.frameMax;
  frame.fieldHeight = (frame.frameHeight * farDistance) / frame.frameMax;
  frame.halfFieldWidth = 0.5 * frame.fieldWidth;
  frame.halfFieldHeight = 0.5 * frame.fieldHeight;

  frame.offsetX = view.offset.x * scale.xScaleInv;
  frame.offsetY = view.offset.y * scale.yScaleInv;
  frame.offsetDeltaX = view.offsetEnd.x * scale.xScaleInv - frame.offsetX;
  frame.offsetDeltaY = view.offsetEnd.y * scale.yScaleInv - frame.offsetY;

  frame.groundY = frame.groundLevel * frame.halfFieldHeight;
  frame.embedDistance = frame.frameMax + frame.embedDepth * frame.sceneDepth;

  constexpr double kWidestSpread = 89.9;                 // degrees; short of the pole of the tangent
  constexpr double kHalfDegrees = 0.008726646259971648;  // pi / 360: half the angle, in radians
  const double spread = std::min(view.spreadDegrees, kWidestSpread);
  frame.spreadTan = frame.inData->utils->ansi.tan(spread * kHalfDegrees);
}
