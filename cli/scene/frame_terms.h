// A frame's place in time and its shape, in the host's terms.
#pragma once

#include <cstdint>

#include "cli/scene/frame_rate.h"
#include "hostapi/types.h"
#include "minihost/frame.h"

namespace cli {

/// Refuses, with kUsage, a frame whose ticks the host cannot count in 32 bits.
void CheckCountable(std::int32_t frame, const FrameRate& rate);

/// How time is counted where a frame of the output lasts as long as one of the layer.
minihost::FrameTiming TimingOf(const FrameRate& rate, double shutterDegrees);

/// A pixel's width over its height, to six decimals.
PF_RationalScale PixelAspectOf(double aspect);

}  // namespace cli
