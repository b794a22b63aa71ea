// A frame's flakes by batches, as the fast loop goes through them.
#pragma once

#include <algorithm>
#include <memory>

#include "effect/render/fast/field.h"

/// Calls `task(batch)` for each batch of so many flakes, its range set and nothing else.
template <class Task>
void ForEachBatch(std::int32_t flakes, Task task) {
  const auto batch = std::make_unique<FlakeBatch>();
  constexpr auto kFlakes = static_cast<std::int32_t>(kLanes);
  for (std::int32_t start = kFirstBatch; start < flakes; start += kFlakes) {
    batch->first = static_cast<std::size_t>(std::max(-start, 0));
    batch->last = static_cast<std::size_t>(std::min(flakes - start, kFlakes));
    task(*batch);
  }
}
