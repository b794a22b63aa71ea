#include "cli/run/instance_pool.h"

#include <algorithm>
#include <utility>

namespace cli {

using minihost::Instance;

InstancePool::InstancePool(std::shared_ptr<const minihost::Effect> effect, minihost::ParameterSet parameters)
    : effect_(std::move(effect)), parameters_(std::move(parameters)) {}

Instance InstancePool::Take(std::int32_t frame) {
  const std::scoped_lock lock(mutex_);
  auto chosen = std::ranges::find(free_, std::int64_t{frame} - 1, &Resting::last);
  // The one that has rested longest is the least likely to be the next frame's.
  if (chosen == free_.end()) {
    chosen = std::ranges::min_element(free_, {}, &Resting::last);
  }
  if (chosen == free_.end()) {
    return Instance(effect_, parameters_);
  }
  Instance instance = std::move(chosen->instance);
  free_.erase(chosen);
  return instance;
}

void InstancePool::GiveBack(Instance instance, std::int32_t frame) {
  const std::scoped_lock lock(mutex_);
  free_.push_back({std::move(instance), frame});
}

}  // namespace cli
