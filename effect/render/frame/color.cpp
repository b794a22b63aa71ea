#include "effect/render/frame/color.h"

#include "effect/host/parameter_index.h"
#include "effect/pixel/pixel_type.h"

namespace {

// Opacity 0..1 as a channel: truncated, and 0 for what is not above it.
template <class T>
typename PixelType<T>::Channel OpacityChannel(float opacity) {
  constexpr auto kWhite = PixelType<T>::kWhite;
  const float alpha = opacity * static_cast<float>(kWhite);
  if (!(alpha > 0.0f)) {
    return 0;
  }
  return static_cast<typename PixelType<T>::Channel>(
      alpha >= static_cast<float>(kWhite) ? kWhite : static_cast<std::int32_t>(alpha));
}

void FillColor(FrameSetup<PF_Pixel>& frame, PF_Pixel color) {
  frame.flakeColor = color;
  frame.flakeColor.alpha = OpacityChannel<PF_Pixel>(frame.opacity);
  frame.influenceScale = frame.influence / static_cast<float>(PixelType<PF_Pixel>::kWhite);
}

void FillColor(FrameSetup<PF_Pixel16>& frame, PF_Pixel color) {
  AdaptDepth<PF_Pixel16>(color, frame.flakeColor);
  frame.flakeColor.alpha = OpacityChannel<PF_Pixel16>(frame.opacity);
  frame.influenceScale = frame.influence * (1.0f / static_cast<float>(PixelType<PF_Pixel16>::kWhite));
}

void FillColor(FrameSetup<PF_PixelFloat>& frame, PF_Pixel color) {
  constexpr float kByteToUnit = 0.003921568859368563f;  // the float nearest 1/255
  frame.flakeRed = static_cast<float>(color.red) * kByteToUnit;
  frame.flakeGreen = static_cast<float>(color.green) * kByteToUnit;
  frame.flakeBlue = static_cast<float>(color.blue) * kByteToUnit;
  frame.flakeColor = {frame.opacity, frame.flakeRed, frame.flakeGreen, frame.flakeBlue};
  frame.influenceScale = frame.influence;
}

}  // namespace

template <class T>
bool SetFlakeColor(FrameSetup<T>& frame, PF_Pixel color) {
  FillColor(frame, color);
  frame.transferOp = frame.transferMode == kTransferLighten ? JLightenT<T> : JCompositeT<T>;
  frame.underOp = JCompositeUnderT<T>;
  return frame.flakeColor.alpha > 0;
}

template bool SetFlakeColor(FrameSetup<PF_Pixel>&, PF_Pixel);
template bool SetFlakeColor(FrameSetup<PF_Pixel16>&, PF_Pixel);
template bool SetFlakeColor(FrameSetup<PF_PixelFloat>&, PF_Pixel);

template <>
SampleFunc<PF_Pixel> AcquireSampler<PF_Pixel>(const AEGP_SuiteHandler& suites) {
  return suites.Sampling8Suite1()->subpixel_sample;
}

template <>
SampleFunc<PF_Pixel16> AcquireSampler<PF_Pixel16>(const AEGP_SuiteHandler& suites) {
  return suites.Sampling16Suite1()->subpixel_sample16;
}

template <>
SampleFunc<PF_PixelFloat> AcquireSampler<PF_PixelFloat>(const AEGP_SuiteHandler& suites) {
  return suites.SamplingFloatSuite1()->subpixel_sample_float;
}
