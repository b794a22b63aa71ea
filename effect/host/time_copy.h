// The render's times, with the current time split into whole and fractional layer frames.
#pragma once

#include <cstdint>

#include "hostapi/commands.h"

struct TimeCopy {
  std::int32_t renderTime;     // ticks
  std::int32_t wholeTime;      // renderTime rounded toward zero to a multiple of localTimeStep
  std::int32_t fracTime;       // renderTime - wholeTime
  std::uint32_t timeScale;     // ticks a second
  std::int32_t timeStep;       // ticks for each rendered frame
  std::int32_t localTimeStep;  // ticks for each frame of the layer
  double shutterAngle;         // fraction of a frame; 1.0 is 360 degrees
  double frameFraction;        // fracTime in layer frames; not finite when localTimeStep is 0
};

static_assert(sizeof(TimeCopy) == 40);

/// Never fails.  With a localTimeStep of 0 the whole time is 0 and the fraction is not finite.
TimeCopy FX_CopyTimeA(const PF_InData* in_data);
