// The effect's instances that a run's workers share: each is on loan to one frame at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "minihost/instance.h"

namespace cli {

/// An instance continues the motion of the frame before at once, where others sum it up from frame 0.  That
/// costs some 30 ns for each frame before this one: nothing to speak of at frame 10000, but milliseconds at
/// 100000.  So the instance that rendered the frame before is lent when it is free, which it always is with
/// one worker.  Safe for many threads.
class InstancePool {
 public:
  InstancePool(std::shared_ptr<const minihost::Effect> effect, minihost::ParameterSet parameters);

  /// A free instance, or a new one.  Whichever it is, the frame gets the same picture.
  minihost::Instance Take(std::int32_t frame);

  /// After a frame that was rendered to its end.
  void GiveBack(minihost::Instance instance, std::int32_t frame);

 private:
  struct Resting {
    minihost::Instance instance;
    std::int64_t last;  // the frame that it rendered last
  };

  std::shared_ptr<const minihost::Effect> effect_;
  minihost::ParameterSet parameters_;
  std::mutex mutex_;
  std::vector<Resting> free_;
};

}  // namespace cli
