// From the times that hosts give to frames.
#pragma once

#include <cstdint>
#include <vector>

namespace frei0r {

/// As the effect counts time: timeScale ticks a second, timeStep ticks a frame.
struct Rate {
  std::int32_t timeScale = 25;
  std::int32_t timeStep = 1;
  bool operator==(const Rate&) const = default;
  double FramesPerSecond() const { return static_cast<double>(timeScale) / timeStep; }
};

enum class TimeUnit { kAuto, kSeconds, kMilliseconds };

/// The rate nearest to a number of frames a second: one of the usual rates within a thousandth, the broadcast
/// ones (24000/1001 and its like) among them, else thousandths of a frame a second, from 0.01 to 1000.
Rate NearestRate(double framesPerSecond);

/// Hosts give a time in seconds or in milliseconds and never say which, nor how long a frame lasts.  What is
/// not told is found out from the times so far: a first step of 2 or more counts milliseconds, a smaller one
/// seconds; the rate is the lowest of the usual ones at which every time so far lies on a frame, and 25 until
/// there is a step.  So the first frame is exact only when the rate is told.
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
  std::int64_t lastFrame_ = -1;
  Rate rate_;
};

}  // namespace frei0r
