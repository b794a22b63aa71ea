// Motion: the time integrals of Speed, Wind and Frequency up to the frame, and during the shutter interval.
#pragma once

#include "effect/host/fxenv.h"
#include "effect/render/frame/record.h"
#include "effect/render/frame/sequence_state.h"

/// Sums of one sample for each layer frame, in units of the parameter; times frameSeconds they are distances
/// (and, for the frequency, cycles).
struct MotionSums {
  double speed = 0.0;
  double wind = 0.0;
  double frequency = 0.0;
};

/// Sets `sums` to those at the render time.  When the render follows `cached` by exactly one layer frame they
/// continue from it with one sample each; otherwise they are taken anew from time 0, three samples for each
/// layer frame, plus a share of a later sample for a time between frames.  The two agree where the time is on
/// a layer frame and the parameters have not been edited between.
///
/// Returns the host's status when it cancels the render: of many layer frames it is asked now and then.
PF_Err IntegrateMotion(const FrameField& frame, const SequenceState& cached, MotionSums& sums);

/// Sets the travel up to the frame, and `wigglePhase` in cycles.
void SetTravel(FrameField& frame, const MotionSums& sums);

/// IntegrateMotion and SetTravel from what the instance's record keeps of the last render, and keeps the sums
/// there.  Returns the host's status when it cancels the render before they are kept.
PF_Err ContinueMotion(const Fxenv& env, FrameField& frame);

/// Sets the travel during the shutter interval, at the rates that it ends with, and `phaseBlur` in cycles.
void SetShutterMotion(FrameField& frame);
