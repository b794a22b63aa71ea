#include "bindings/frei0r/clock.h"

#include <algorithm>
#include <cmath>

namespace frei0r {
namespace {

constexpr double kAbsurd = 1e15;

/// The rounding of clocks that count whole milliseconds, in seconds.
constexpr double kClockError = 0.00051;

/// How far the times are at most from frames of the rate, in seconds.
double Error(const Rate& rate, const std::vector<double>& times, double secondsInUnit) {
  double error = 0;
  for (const double time : times) {
    const double seconds = time * secondsInUnit;
    const double frame = std::round(seconds * rate.FramesPerSecond());
    error = std::max(error, std::abs(frame / rate.FramesPerSecond() - seconds));
  }
  return error;
}

/// The usual rate nearest to the times.  Where none is near: that of the last step, when nothing was known
/// before; else that of all the times, when they lie on its frames, and not on those of what was known.
Rate RateOf(const std::vector<double>& times, double secondsInUnit, const Rate* known) {
  const auto error = [&](const Rate& rate) { return Error(rate, times, secondsInUnit); };
  const Rate& nearest = *std::ranges::min_element(bindings::UsualRates(), {}, error);
  if (error(nearest) <= kClockError) {
    return nearest;
  }
  if (known == nullptr) {
    return bindings::NearestRate(1 / (std::abs(times.back() - times[times.size() - 2]) * secondsInUnit));
  }
  const auto [first, last] = std::ranges::minmax(times);
  const double seconds = (last - first) * secondsInUnit;
  const Rate longer = bindings::NearestRate(std::round(seconds * known->FramesPerSecond()) / seconds);
  return error(longer) <= kClockError ? longer : *known;
}

}  // namespace

void Clock::Set(double framesPerSecond, TimeUnit unit) {
  toldRate_ = framesPerSecond;
  toldUnit_ = unit;
}

void Clock::FindOut(double time) {
  constexpr std::size_t kMemory = 16;
  constexpr double kLeastMilliseconds = 2;  // no video has 500 frames a second, none a frame of two seconds
  if (std::ranges::find(times_, time) != times_.end()) {
    return;
  }
  if (!times_.empty() && foundUnit_ == TimeUnit::kAuto && time > times_.back()) {
    foundUnit_ = time - times_.back() >= kLeastMilliseconds ? TimeUnit::kMilliseconds : TimeUnit::kSeconds;
  }
  times_.push_back(time);
  if (times_.size() > kMemory) {
    times_.erase(times_.begin());
  }
}

std::int32_t Clock::FrameAt(double time) {
  const bool isTold = toldRate_ > 0;
  if (isTold) {
    rate_ = bindings::NearestRate(toldRate_);
  }
  double frame = static_cast<double>(lastFrame_) + 1;
  if (std::abs(time) < kAbsurd) {
    FindOut(time);
    const TimeUnit unit = toldUnit_ != TimeUnit::kAuto ? toldUnit_ : foundUnit_;
    const double secondsInUnit = unit == TimeUnit::kMilliseconds ? 0.001 : 1;
    // Of two rates that are close every thousandth frame or so is the same, so what is found stays.
    if (!isTold && times_.size() > 1 && !(isFound_ && Error(rate_, times_, secondsInUnit) <= kClockError)) {
      rate_ = RateOf(times_, secondsInUnit, isFound_ ? &rate_ : nullptr);
      isFound_ = true;
    }
    frame = std::round(time * secondsInUnit * rate_.FramesPerSecond());
  }
  const double mostFrames = bindings::MostFrames(rate_);
  lastFrame_ = static_cast<std::int32_t>(std::clamp(frame, -mostFrames, mostFrames));
  return lastFrame_;
}

}  // namespace frei0r
