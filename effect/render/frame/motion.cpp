#include "effect/render/frame/motion.h"

#include <cmath>
#include <cstdint>

#include "effect/host/parameter_index.h"
#include "effect/host/parameter_readers.h"
#include "effect/pixel/integer.h"
#include "effect/render/frame/parameters.h"

namespace {

MotionSums SampleMotion(const FrameField& frame, std::int32_t time, std::int32_t timeStep) {
  const auto read = [&](ParameterIndex index) {
    return Get_Float_Slider(frame.inData, index, time, timeStep, frame.timeScale);
  };
  MotionSums sample;
  sample.speed = read(kSpeed);
  sample.wind = read(kWind);
  sample.frequency = read(kFrequency);
  return sample;
}

void AddWeighted(MotionSums& sums, const MotionSums& sample, double weight) {
  sums.speed += weight * sample.speed;
  sums.wind += weight * sample.wind;
  sums.frequency += weight * sample.frequency;
}

PF_Err AskAbort(const FrameField& frame) {
  return frame.inData->inter.abort(frame.inData->effect_ref);
}

// Between two questions whether to go on, some ten milliseconds of samples: a time that a host never meant
// takes minutes to reach.
constexpr std::int64_t kFramesToAbortCheck = 1 << 16;

PF_Err IntegrateFromStart(const FrameField& frame, MotionSums& sums) {
  const double layerFrames = static_cast<double>(frame.renderTime) / static_cast<double>(frame.localTimeStep);
  const double wholeFrames = std::floor(layerFrames);
  const double fraction = layerFrames - wholeFrames;

  sums = {};
  std::int32_t time = 0;
  const auto last = static_cast<std::int64_t>(wholeFrames);
  for (std::int64_t i = 0; i <= last; ++i) {
    if (i != 0 && i % kFramesToAbortCheck == 0) {
      if (const PF_Err interrupted = AskAbort(frame); interrupted != PF_Err_NONE) {
        return interrupted;
      }
    }
    AddWeighted(sums, SampleMotion(frame, time, frame.localTimeStep), 1.0);
    time = WrapAdd(time, frame.localTimeStep);
  }
  if (fraction > 0.0) {
    // The share of the unfinished frame is sampled one frame further on, at the end of the frame after it.
    time = WrapAdd(time, frame.localTimeStep);
    AddWeighted(sums, SampleMotion(frame, time, frame.localTimeStep), fraction);
  }
  return PF_Err_NONE;
}

}  // namespace

PF_Err IntegrateMotion(const FrameField& frame, const SequenceState& cached, MotionSums& sums) {
  if (WrapSubtract(frame.renderTime, frame.localTimeStep) != cached.cachedTime) {
    return IntegrateFromStart(frame, sums);
  }
  sums = {cached.speedSum, cached.windSum, cached.frequencySum};
  AddWeighted(sums, SampleMotion(frame, frame.renderTime, frame.timeStep), 1.0);
  return PF_Err_NONE;
}

void SetTravel(FrameField& frame, const MotionSums& sums) {
  frame.fallDistance = sums.speed * frame.frameSeconds;
  frame.windDistance = sums.wind * frame.frameSeconds;
  frame.wigglePhase = sums.frequency * frame.frameSeconds;
}

PF_Err ContinueMotion(const Fxenv& env, FrameField& frame) {
  MotionSums sums;
  const SequenceState cached = ReadSequenceState(env.outData->sequence_data);
  if (const PF_Err interrupted = IntegrateMotion(frame, cached, sums); interrupted != PF_Err_NONE) {
    return interrupted;
  }
  if (const PF_Err interrupted = AskAbort(frame); interrupted != PF_Err_NONE) {
    return interrupted;
  }
  SequenceState state;
  state.cachedTime = frame.renderTime;
  state.speedSum = sums.speed;
  state.windSum = sums.wind;
  state.frequencySum = sums.frequency;
  WriteSequenceState(env.outData->sequence_data, state);
  SetTravel(frame, sums);
  return PF_Err_NONE;
}

void SetShutterMotion(FrameField& frame) {
  const MotionSums rates = SampleMotion(frame, frame.shutterEndTime, frame.timeStep);
  const double open = ShutterFraction(frame.inData);
  frame.fallBlur = rates.speed * frame.stepSeconds * open;
  frame.windBlur = rates.wind * frame.stepSeconds * open;
  frame.phaseBlur = rates.frequency * frame.stepSeconds * open;
}
