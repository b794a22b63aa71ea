// From the times that hosts give to frames.
#pragma once

#include <cstdint>
#include <vector>

#include "bindings/rate.h"

namespace frei0r {

using bindings::Rate;

enum class TimeUnit { kAuto, kSeconds, kMilliseconds };

/// Hosts give a time in seconds or in milliseconds and never say which, nor how long a frame lasts.  What is
/// not told is found out from the times so far: a first step of 2 or more counts milliseconds, a smaller one
/// seconds; the rate is the usual one nearest to the times so far, as long as they lie on its frames, and 25
/// until there is a step.  So the first frame is exact only when the rate is told.
class Clock {
 public:
  /// Tells the rate (frames a second; 0 or less: find out) and the unit.
  void Set(double framesPerSecond, TimeUnit unit);

  /// The frame at a host's time.  A time that is no number, or beyond 10^15, is no time: then it is the frame
  /// after the last one, 0 at the start.  Frames stay within those that the host's ticks can count.
  std::int32_t FrameAt(double time);

  /// Of the last frame.
  const Rate& FrameRate() const { return rate_; }

 private:
  void FindOut(double time);

  double toldRate_ = 0;
  TimeUnit toldUnit_ = TimeUnit::kAuto;
  TimeUnit foundUnit_ = TimeUnit::kAuto;
  std::vector<double> times_;  // the last few different ones, as the host gave them
  bool isFound_ = false;       // the rate, from the times
  std::int32_t lastFrame_ = -1;
  Rate rate_;
};

}  // namespace frei0r
