// Motion: the time integrals of Speed, Wind and Frequency up to the frame, and during the shutter interval.
#pragma once

#include "effect/render/frame/record.h"
#include "effect/render/frame/sequence_state.h"

/// Sums of one sample for each layer frame, in units of the parameter; times frameSeconds they are distances
/// (and, for the frequency, cycles).
struct MotionSums {
  double speed = 0.0;
  double wind = 0.0;
  double frequency = 0.0;
};

/// The sums at the render time.  When the render follows `cached` by exactly one layer frame they continue
/// from it with one sample each; otherwise they are taken anew from time 0, three samples for each layer
/// frame, plus a share of a later sample for a time between frames.  The two agree where the time is on a
/// layer frame and the parameters have not been edited between.
MotionSums IntegrateMotion(const FrameField& frame, const SequenceState& cached);

/// Travel and phase in the shutter interval, at the rates of its end.
struct ShutterMotion {
  double fall;
  double wind;
  double cycles;
};

ShutterMotion SampleShutterMotion(const FrameField& frame);
