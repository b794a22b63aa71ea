// The flake field by batches: the fast form of NextFlake, equal to it bit for bit.
#pragma once

#include <cstdint>

#include "effect/pixel/fast/cpu_path.h"
#include "effect/render/fast/batch.h"
#include "effect/render/frame/record.h"

/// The random streams of one pass, one state for each lane.  A flake takes a fixed number of draws from each
/// stream (frame/flake_draws.h), so that a lane reaches its flake of the next batch in one step of the
/// recurrence raised to a power.
struct BatchStreams {
  /// The first batch ends with flake 1, after which progress is first reported; its lanes begin 126 flakes
  /// before the streams do.
  explicit BatchStreams(const FrameField& frame);

  Lanes<std::uint32_t> flake;
  Lanes<std::uint32_t> illumination;
  Lanes<std::uint32_t> wiggle;
};

/// Index of the first lane's flake in the first batch: the batches end where progress is reported.
inline constexpr std::int32_t kFirstBatch = 2 - static_cast<std::int32_t>(kLanes);

/// Advances the flake and wiggle streams by one batch and fills all of `batch` but its range, which the
/// caller has set, and its sizes.
void NextBatch(const FrameField& frame, BatchStreams& streams, FlakeBatch& batch, CpuPath path);
