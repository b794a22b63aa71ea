#include "effect/render/render_pass.h"

#include "effect/host/new_world.h"
#include "effect/host/parameter_index.h"
#include "effect/host/parameter_readers.h"
#include "effect/host/time_copy.h"
#include "effect/render/draw_flakes.h"
#include "effect/render/frame/color.h"
#include "effect/render/frame/flake_draws.h"
#include "effect/render/frame/geometry.h"
#include "effect/render/frame/light.h"
#include "effect/render/frame/motion.h"
#include "effect/render/frame/parameters.h"
#include "effect/render/frame/sequence_state.h"

namespace {

// Each stream is apart from the others for every seed.
constexpr std::int32_t kFlakeStream = 0x2db;
constexpr std::int32_t kIlluminationStream = 0xc6b;
constexpr std::int32_t kWiggleStream = 0x701;

PF_Err ClearOutput(const Fxenv& env) {
  return env.inData->utils->fill(env.inData->effect_ref, nullptr, nullptr, env.output);
}

// The instance's record exists when this returns 0.
PF_Err EnsureSequenceState(const Fxenv& env) {
  PF_Err error = PF_Err_NONE;
  if (env.outData->sequence_data == nullptr) {
    error = SequenceSetup(env.inData, env.outData);
  }
  if (env.outData->sequence_data == nullptr || error != PF_Err_NONE) {
    return ClearOutput(env) | error;
  }
  return PF_Err_NONE;
}

// The picture under the flakes: the layer, or nothing, where there is nothing for flakes to go behind.
PF_Err PrepareBackground(const Fxenv& env, FrameField& frame) {
  if (frame.compositeWithOriginal) {
    const PF_LRect& shown = env.output->extent_hint;
    return env.inData->utils->copy(env.inData->effect_ref, env.input, env.output, &shown, &shown);
  }
  const PF_Err error = ClearOutput(env);
  frame.embedDepth = 1.0;
  return error;
}

bool TimeIsUsable(const TimeCopy& time) {
  return time.timeScale != 0 && time.localTimeStep != 0 && time.renderTime >= 0;
}

PF_Err SetMotion(const Fxenv& env, FrameField& frame, double& cycles) {
  frame.frameSeconds = static_cast<double>(frame.localTimeStep) / static_cast<double>(frame.timeScale);
  const MotionSums sums = IntegrateMotion(frame, ReadSequenceState(env.outData->sequence_data));
  if (const PF_Err interrupted = env.inData->inter.abort(env.inData->effect_ref);
      interrupted != PF_Err_NONE) {
    return interrupted;
  }
  SequenceState state;
  state.cachedTime = frame.renderTime;
  state.speedSum = sums.speed;
  state.windSum = sums.wind;
  state.frequencySum = sums.frequency;
  WriteSequenceState(env.outData->sequence_data, state);

  frame.fallDistance = sums.speed * frame.frameSeconds;
  frame.windDistance = sums.wind * frame.frameSeconds;
  cycles = sums.frequency * frame.frameSeconds;
  return PF_Err_NONE;
}

void SetSeeds(FrameField& frame) {
  frame.flakeSeed = frame.randomSeed ^ kFlakeStream;
  frame.illumSeed = frame.randomSeed ^ kIlluminationStream;
  frame.wiggleSeed = frame.randomSeed ^ kWiggleStream;
}

PF_Err SetWiggle(FrameField& frame, double cycles, double shutterCycles) {
  // The spline leaves the noise half the root mean square of a cosine, and turns it about once in three units
  // of the table; doubled, both amount and pace come near the cosine's.
  constexpr double kNoiseUnits = 2.0;
  constexpr double kNoiseAmount = 2.0;

  frame.wiggleOn = frame.wiggleAmount > 0.0 || frame.wiggleAmountEnd > 0.0 || frame.flatness != 0.0f;
  double phaseFactor = kTwoPi;
  if (frame.wiggleOn && frame.stochasticWiggle) {
    constexpr std::uint32_t kCount = 32;
    constexpr std::int32_t kKeyStep = 128;
    if (const PF_Err error = frame.noiseTable.Allocate(kCount); error != PF_Err_NONE) {
      return error;
    }
    if (const PF_Err error = frame.noiseTable.NoiseTableLin(frame.wiggleSeed, kKeyStep, 0.0f, 0);
        error != PF_Err_NONE) {
      return error;
    }
    frame.wiggleAmount *= kNoiseAmount;
    frame.wiggleAmountEnd *= kNoiseAmount;
    phaseFactor = kNoiseUnits;
  }
  frame.wigglePhase = cycles * phaseFactor;
  frame.phaseBlur = shutterCycles * phaseFactor;
  return PF_Err_NONE;
}

}  // namespace

template <class T>
PF_Err RenderThisSmart(Fxenv& env) {
  FX_NewWorld illuminationCopy(env);
  FrameSetup<T> frame = {{.scale = FX_PARc(env.inData), .inData = env.inData}};
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
  if (frame.flakeCount < 1 || !TimeIsUsable(FX_CopyTimeA(env.inData))) {
    return PF_Err_NONE;
  }
  SetFieldGeometry(frame, view);
  const PF_Pixel color = Get_Color(env.inData, kColor, frame.renderTime, frame.timeStep, frame.timeScale);
  if (!SetFlakeColor(frame, color)) {
    return PF_Err_NONE;
  }
  double cycles = 0.0;
  if (const PF_Err error = SetMotion(env, frame, cycles); error != PF_Err_NONE) {
    return error;
  }
  SetSeeds(frame);
  if (const PF_Err error = PrepareIllumination(env, frame, illuminationCopy); error != PF_Err_NONE) {
    return error;
  }
  frame.stepSeconds = static_cast<double>(frame.timeStep) / static_cast<double>(frame.timeScale);
  const ShutterMotion shutter = SampleShutterMotion(frame);
  frame.fallBlur = shutter.fall;
  frame.windBlur = shutter.wind;
  if (const PF_Err error = SetWiggle(frame, cycles, shutter.cycles); error != PF_Err_NONE) {
    return error;
  }
  return DrawFlakes(frame);
}

template PF_Err RenderThisSmart<PF_Pixel>(Fxenv&);
template PF_Err RenderThisSmart<PF_Pixel16>(Fxenv&);
template PF_Err RenderThisSmart<PF_PixelFloat>(Fxenv&);
