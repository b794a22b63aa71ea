#include "effect/render/frame/scale.h"

namespace {

constexpr double kFixedOne = 65536.0;

}  // namespace

FX_PARc::FX_PARc(const PF_InData* in_data) {
  const PF_RationalScale& aspect = in_data->pixel_aspect_ratio;
  const PF_RationalScale& downsampleX = in_data->downsample_x;
  const PF_RationalScale& downsampleY = in_data->downsample_y;

  aspectInv = static_cast<double>(aspect.den) / static_cast<double>(aspect.num);
  xScale = aspectInv * static_cast<double>(downsampleX.num) / static_cast<double>(downsampleX.den);
  yScale = static_cast<double>(downsampleY.num) / static_cast<double>(downsampleY.den);
  yScaleInv = 1.0 / yScale;
  xScaleInv = 1.0 / xScale;
  meanScaleInv = (xScaleInv + yScaleInv) * 0.5;
  xScaleFixed = xScale * kFixedOne;
  yScaleFixed = yScale * kFixedOne;

  meanScaleInvF = static_cast<float>(meanScaleInv);
  aspectInvF = static_cast<float>(aspectInv);
  xScaleInvF = static_cast<float>(xScaleInv);
  yScaleInvF = static_cast<float>(yScaleInv);
  xScaleF = static_cast<float>(xScale);
  yScaleF = static_cast<float>(yScale);
  xScaleFixedF = static_cast<float>(xScaleFixed);
  yScaleFixedF = static_cast<float>(yScaleFixed);
}
