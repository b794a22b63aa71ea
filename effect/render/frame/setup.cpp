#include "effect/render/frame/setup.h"

#include "effect/host/time_copy.h"
#include "effect/render/frame/background.h"
#include "effect/render/frame/color.h"
#include "effect/render/frame/geometry.h"
#include "effect/render/frame/light.h"
#include "effect/render/frame/motion.h"
#include "effect/render/frame/parameters.h"
#include "effect/render/frame/seeds.h"
#include "effect/render/frame/wiggle.h"

namespace {

bool HasFlakes(const FrameField& frame) {
  const TimeCopy time = FX_CopyTimeA(frame.inData);
  return frame.flakeCount >= 1 && time.timeScale != 0 && time.localTimeStep != 0 && time.renderTime >= 0;
}

}  // namespace

// The order of the steps is that of the host's calls, and decides what is left undone when one of them ends
// the pass.
template <class T>
std::optional<PF_Err> SetUpFrame(Fxenv& env, FX_NewWorld& light, FrameSetup<T>& frame) {
  frame.output = env.output;
  ReadTimes(frame);
  const ViewSamples view = ReadParameters(frame);
  if (const PF_Err error = SetFrameExtent(env, frame); error != PF_Err_NONE) {
    return error;
  }
  if (const PF_Err error = EnsureSequenceState(env); error != PF_Err_NONE) {
    return error;
  }
  frame.sampleFn = AcquireSampler<T>(env.suites);
  if (const PF_Err error = PrepareBackground(env, frame); error != PF_Err_NONE) {
    return error;
  }
  if (!HasFlakes(frame)) {
    return PF_Err_NONE;
  }
  SetFieldGeometry(frame, view);
  if (!SetFlakeColor(frame, ReadColor(frame))) {
    return PF_Err_NONE;
  }
  if (const PF_Err error = ContinueMotion(env, frame); error != PF_Err_NONE) {
    return error;
  }
  SetSeeds(frame);
  if (const PF_Err error = PrepareIllumination(env, frame, light); error != PF_Err_NONE) {
    return error;
  }
  SetShutterMotion(frame);
  if (const PF_Err error = SetWiggle(frame); error != PF_Err_NONE) {
    return error;
  }
  return std::nullopt;
}

template std::optional<PF_Err> SetUpFrame(Fxenv&, FX_NewWorld&, FrameSetup<PF_Pixel>&);
template std::optional<PF_Err> SetUpFrame(Fxenv&, FX_NewWorld&, FrameSetup<PF_Pixel16>&);
template std::optional<PF_Err> SetUpFrame(Fxenv&, FX_NewWorld&, FrameSetup<PF_PixelFloat>&);
