#include "cli/scene/frame_terms.h"

#include <cmath>
#include <cstdlib>
#include <numeric>

#include "cli/report/error.h"

namespace cli {

void CheckCountable(std::int32_t frame, const FrameRate& rate) {
  const std::int64_t most = INT32_MAX / rate.timeStep - 1;
  if (std::abs(std::int64_t{frame}) > most) {
    Refuse(ExitCode::kUsage, "frame {} is beyond {}, the last that can be counted at {}/{} frames a second",
           frame, most, rate.timeScale, rate.timeStep);
  }
}

minihost::FrameTiming TimingOf(const FrameRate& rate, double shutterDegrees) {
  return {static_cast<std::uint32_t>(rate.timeScale), rate.timeStep, rate.timeStep, shutterDegrees};
}

PF_RationalScale PixelAspectOf(double aspect) {
  constexpr std::int32_t kDenominator = 1'000'000;
  const auto numerator = static_cast<std::int32_t>(std::lround(aspect * kDenominator));
  const std::int32_t divisor = std::gcd(numerator, kDenominator);
  return {numerator / divisor, static_cast<std::uint32_t>(kDenominator / divisor)};
}

}  // namespace cli
