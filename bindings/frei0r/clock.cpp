#include "bindings/frei0r/clock.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace frei0r {
namespace {

constexpr double kAbsurd = 1e15;
constexpr std::array kUsualRates = {Rate{24000, 1001}, Rate{24, 1},  Rate{25, 1},       Rate{30000, 1001},
                                    Rate{30, 1},       Rate{48, 1},  Rate{50, 1},       Rate{60000, 1001},
                                    Rate{60, 1},       Rate{12, 1},  Rate{15, 1},       Rate{10, 1},
                                    Rate{100, 1},      Rate{120, 1}, Rate{120000, 1001}};

/// Whether every time lies on a frame, but for the rounding of clocks that count whole milliseconds.
bool Fits(const Rate& rate, const std::vector<double>& times, double secondsInUnit) {
  constexpr double kClock = 0.00051;  // seconds
  return std::ranges::all_of(times, [&](double time) {
    const double seconds = time * secondsInUnit;
    const double frame = std::round(seconds * rate.FramesPerSecond());
    return std::abs(frame / rate.FramesPerSecond() - seconds) <= kClock;
  });
}

}  // namespace

Rate NearestRate(double framesPerSecond) {
  constexpr double kClose = 0.001;
  constexpr double kLeast = 0.01;
  constexpr double kMost = 1000;
  constexpr std::int32_t kSteps = 1000;
  const double wanted = std::clamp(framesPerSecond, kLeast, kMost);
  const auto distance = [&](const Rate& rate) { return std::abs(rate.FramesPerSecond() - wanted); };
  const Rate nearest = *std::ranges::min_element(kUsualRates, {}, distance);
  if (distance(nearest) <= kClose) {
    return nearest;
  }
  const auto scale = static_cast<std::int32_t>(std::lround(wanted * kSteps));
  const std::int32_t divisor = std::gcd(scale, kSteps);
  return {scale / divisor, kSteps / divisor};
}

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
  if (toldRate_ > 0) {
    rate_ = NearestRate(toldRate_);
  }
  const double mostFrames = std::floor(2147483647.0 / rate_.timeStep) - 2;
  if (!(std::abs(time) < kAbsurd)) {
    lastFrame_ = std::min(lastFrame_ + 1, static_cast<std::int64_t>(mostFrames));
    return static_cast<std::int32_t>(lastFrame_);
  }
  FindOut(time);
  const TimeUnit unit = toldUnit_ != TimeUnit::kAuto ? toldUnit_ : foundUnit_;
  const double secondsInUnit = unit == TimeUnit::kMilliseconds ? 0.001 : 1;
  if (!(toldRate_ > 0) && times_.size() > 1) {
    const auto fitting = [&](const Rate& rate) { return Fits(rate, times_, secondsInUnit); };
    if (const auto usual = std::ranges::find_if(kUsualRates, fitting); usual != kUsualRates.end()) {
      rate_ = *usual;
    } else {
      const auto [first, second] = std::minmax(times_.back(), times_[times_.size() - 2]);
      rate_ = NearestRate(1 / ((second - first) * secondsInUnit));
    }
  }
  const double frame = std::round(time * secondsInUnit * rate_.FramesPerSecond());
  lastFrame_ = static_cast<std::int64_t>(std::clamp(frame, -mostFrames, mostFrames));
  return static_cast<std::int32_t>(lastFrame_);
}

}  // namespace frei0r
