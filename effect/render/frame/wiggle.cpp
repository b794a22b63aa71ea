#include "effect/render/frame/wiggle.h"

#include "effect/render/frame/flake_draws.h"

namespace {

// The spline leaves the noise half the root mean square of a cosine, and turns it about once in three units
// of the table; doubled, both amount and pace come near the cosine's.
constexpr double kNoiseUnits = 2.0;
constexpr double kNoiseAmount = 2.0;

PF_Err BuildNoise(FrameField& frame) {
  constexpr std::uint32_t kCount = 32;
  constexpr std::int32_t kKeyStep = 128;
  if (const PF_Err error = frame.noiseTable.Allocate(kCount); error != PF_Err_NONE) {
    return error;
  }
  return frame.noiseTable.NoiseTableLin(frame.wiggleSeed, kKeyStep, 0.0f, 0);
}

}  // namespace

PF_Err SetWiggle(FrameField& frame) {
  frame.wiggleOn = frame.wiggleAmount > 0.0 || frame.wiggleAmountEnd > 0.0 || frame.flatness != 0.0f;
  double phaseFactor = kTwoPi;
  if (frame.wiggleOn && frame.stochasticWiggle) {
    if (const PF_Err error = BuildNoise(frame); error != PF_Err_NONE) {
      return error;
    }
    frame.wiggleAmount *= kNoiseAmount;
    frame.wiggleAmountEnd *= kNoiseAmount;
    phaseFactor = kNoiseUnits;
  }
  frame.wigglePhase *= phaseFactor;
  frame.phaseBlur *= phaseFactor;
  return PF_Err_NONE;
}
