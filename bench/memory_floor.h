// The memory floor of drawing: what it costs only to read the covered pixels and write them back.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "bench/snow_frame.h"
#include "effect/pixel/fast/cpu_path.h"

/// Where each covered pixel of the frame is, in bytes from the first pixel, in the order of the blending; the
/// repeats that fill up a list's blocks are left out.  Draws on the frame's picture.
template <class T>
std::vector<std::uint32_t> CoveredPixels(const FrameSetup<T>& frame, CpuPath path);

/// How many pixels ahead to prefetch; the best of them is the floor.
inline constexpr std::array<std::size_t, 5> kPrefetchDistances = {0, 32, 64, 128, 256};

/// Reads and writes back every pixel of `covered` in the restored picture, which stays as it is, prefetching
/// one of kPrefetchDistances ahead.  Returns the seconds; throws Difference when the picture has changed.
template <class T>
double TouchPixels(SnowFrame<T>& frame, const std::vector<std::uint32_t>& covered, std::size_t distance);
