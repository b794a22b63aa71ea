// From frames a second, as hosts tell them, to the ticks that the effect counts.
#pragma once

#include <cstdint>
#include <span>

namespace bindings {

/// As the effect counts time: timeScale ticks a second, timeStep ticks a frame.
struct Rate {
  std::int32_t timeScale = 25;
  std::int32_t timeStep = 1;
  bool operator==(const Rate&) const = default;
  double FramesPerSecond() const { return static_cast<double>(timeScale) / timeStep; }
};

/// The rate nearest to a number of frames a second: one of the usual rates within a thousandth, the broadcast
/// ones (24000/1001 and its like) among them, else thousandths of a frame a second, from 0.01 to 1000.  What
/// is no number counts as the lowest.
Rate NearestRate(double framesPerSecond);

/// The rates of films, broadcasts and drawings; those met most often first.
std::span<const Rate> UsualRates();

/// The last frame, of either sign, that is rendered: the effect's ticks can count it and the frame after it,
/// for the shutter, and it is no farther than a day.  The motion sums up all frames before, which at a time
/// that is no more than a host's mistake would take minutes.
double MostFrames(const Rate& rate);

}  // namespace bindings
