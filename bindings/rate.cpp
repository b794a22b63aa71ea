#include "bindings/rate.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace bindings {
namespace {

constexpr std::array kUsualRates = {Rate{24000, 1001}, Rate{24, 1},  Rate{25, 1},       Rate{30000, 1001},
                                    Rate{30, 1},       Rate{48, 1},  Rate{50, 1},       Rate{60000, 1001},
                                    Rate{60, 1},       Rate{12, 1},  Rate{15, 1},       Rate{10, 1},
                                    Rate{100, 1},      Rate{120, 1}, Rate{120000, 1001}};

}  // namespace

std::span<const Rate> UsualRates() {
  return kUsualRates;
}

Rate NearestRate(double framesPerSecond) {
  constexpr double kClose = 0.001;
  constexpr double kLeast = 0.01;
  constexpr double kMost = 1000;
  constexpr std::int32_t kSteps = 1000;
  const double wanted = framesPerSecond > kLeast ? std::min(framesPerSecond, kMost) : kLeast;
  const auto distance = [&](const Rate& rate) { return std::abs(rate.FramesPerSecond() - wanted); };
  const Rate nearest = *std::ranges::min_element(kUsualRates, {}, distance);
  if (distance(nearest) <= kClose) {
    return nearest;
  }
  const auto scale = static_cast<std::int32_t>(std::lround(wanted * kSteps));
  const std::int32_t divisor = std::gcd(scale, kSteps);
  return {scale / divisor, kSteps / divisor};
}

double MostFrames(const Rate& rate) {
  constexpr double kDay = 24.0 * 60 * 60 * 60;  // at 60 frames a second
  return std::min(kDay, std::floor(2147483647.0 / rate.timeStep) - 2.0);
}

}  // namespace bindings
