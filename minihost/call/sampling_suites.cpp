#include "minihost/call/sampling_suites.h"

#include "minihost/call/answer.h"
#include "minihost/picture/sampling.h"

namespace minihost {
namespace {

template <class P>
bool CanSample(const PF_SampPB* params, const P* dst) noexcept {
  return params != nullptr && dst != nullptr && params->src != nullptr && params->src->data != nullptr &&
         params->src->width > 0 && params->src->height > 0;
}

template <class P>
PF_Err Nearest(PF_ProgPtr, PF_Fixed x, PF_Fixed y, const PF_SampPB* params, P* dst) noexcept {
  if (!CanSample(params, dst)) {
    return PF_Err_BAD_CALLBACK_PARAM;
  }
  *dst = SampleNearest<P>(*params->src, x, y);
  return PF_Err_NONE;
}

template <class P>
PF_Err Subpixel(PF_ProgPtr, PF_Fixed x, PF_Fixed y, const PF_SampPB* params, P* dst) noexcept {
  if (!CanSample(params, dst)) {
    return PF_Err_BAD_CALLBACK_PARAM;
  }
  *dst = SampleBilinear<P>(*params->src, x, y);
  return PF_Err_NONE;
}

template <class P>
PF_Err RefusingSubpixel(PF_ProgPtr effect_ref, PF_Fixed x, PF_Fixed y, const PF_SampPB* params,
                        P* dst) noexcept {
  return Answer(Command::Named(effect_ref), Service::kSubpixelSample,
                [&](Command&) { return Subpixel(effect_ref, x, y, params, dst); });
}

}  // namespace

const PF_Sampling8Suite1 kSampling8Suite{Nearest<PF_Pixel>, Subpixel<PF_Pixel>};
const PF_Sampling8Suite1 kRefusingSampling8Suite{Nearest<PF_Pixel>, RefusingSubpixel<PF_Pixel>};
const PF_Sampling16Suite1 kSampling16Suite{Nearest<PF_Pixel16>, Subpixel<PF_Pixel16>};
const PF_Sampling16Suite1 kRefusingSampling16Suite{Nearest<PF_Pixel16>, RefusingSubpixel<PF_Pixel16>};
const PF_SamplingFloatSuite1 kSamplingFloatSuite{Nearest<PF_PixelFloat>, Subpixel<PF_PixelFloat>};
const PF_SamplingFloatSuite1 kRefusingSamplingFloatSuite{Nearest<PF_PixelFloat>,
                                                         RefusingSubpixel<PF_PixelFloat>};

}  // namespace minihost
