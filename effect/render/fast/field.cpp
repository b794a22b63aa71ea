#include "effect/render/fast/field.h"

#include <cmath>

#include "effect/pixel/fast/flake_random.h"
#include "effect/pixel/fast/integer.h"
#include "effect/pixel/integer.h"
#include "effect/pixel/noise_spline.h"
#include "effect/render/frame/flake_draws.h"

namespace {

// The steps are NextFlake's, in its order, each value computed for every lane and then chosen.  What a loop
// reads of the record it reads into locals first, alike in every step: a store to a lane might change the
// record, as far as the compiler knows.

// States before each lane's flake in the first batch.
Lanes<std::uint32_t> FirstLanes(std::int32_t seed, std::uint32_t draws) {
  Lanes<std::uint32_t> lanes;
  std::uint32_t state =
      JumpBy(static_cast<std::uint32_t>(kFirstBatch) * draws)(static_cast<std::uint32_t>(seed));
  const RandomJump flake = JumpBy(draws);
  for (std::uint32_t& lane : lanes) {
    lane = state;
    state = flake(state);
  }
  return lanes;
}

// The values between the steps below; one set lives on the stack of a call.
struct FieldLanes {
  Lanes<double> x;  // in the unbounded field
  Lanes<double> y;
  Lanes<double> slope;
  Lanes<double> shutterFall;
  Lanes<double> shutterWind;
  Lanes<double> amountFactor;
  Lanes<double> openPhase;
  Lanes<double> closePhase;
  Lanes<float> openWiggle;
  Lanes<float> closeWiggle;
  Lanes<float> normalX;
  Lanes<float> normalY;
};

VINTREL_INLINE std::int32_t Draw(std::uint32_t& state) {
  state = FlakeRandom::Step(state);
  return FlakeRandom::Result(state);
}

VINTREL_INLINE void DrawTravel(const FrameField& frame, BatchStreams& streams, FieldLanes& lanes,
                               FlakeBatch& batch) {
  constexpr RandomJump kNextBatch = JumpBy(kFlakeDraws * kLanes);
  const double fieldWidth = frame.fieldWidth, fieldHeight = frame.fieldHeight;
  const double sceneDepth = frame.sceneDepth, frameMax = frame.frameMax;
  const double speedVariation = frame.speedVariation, windVariation = frame.windVariation;
  const double spreadTan = frame.spreadTan;
  const double fallDistance = frame.fallDistance, windDistance = frame.windDistance;
  const double fallBlur = frame.fallBlur, windBlur = frame.windBlur;
  for (std::size_t i = 0; i < kLanes; ++i) {
    std::uint32_t state = streams.flake[i];
    streams.flake[i] = kNextBatch(state);
    const double x0 = UnitFraction(Draw(state)) * fieldWidth;
    const double y0 = UnitFraction(Draw(state)) * fieldHeight;
    const double behind = UnitFraction(Draw(state)) * sceneDepth;
    const double speedFactor = 1.0 + speedVariation * SignedFraction(Draw(state));
    const double slope = spreadTan * SignedFraction(Draw(state));
    const double windFactor = 1.0 + windVariation * SignedFraction(Draw(state));
    batch.sizeDraw[i] = Draw(state);
    const double fall = fallDistance * speedFactor;
    lanes.x[i] = x0 + slope * fall + windDistance * windFactor;
    lanes.y[i] = y0 + fall;
    lanes.slope[i] = slope;
    lanes.shutterFall[i] = fallBlur * speedFactor;
    lanes.shutterWind[i] = windBlur * windFactor;
    const double depth = frameMax + behind;
    batch.depth[i] = depth;
    batch.scale[i] = frameMax / depth;
  }
}

VINTREL_INLINE void DrawWiggle(const FrameField& frame, BatchStreams& streams, FieldLanes& lanes) {
  constexpr RandomJump kNextBatch = JumpBy(kWiggleDraws * kLanes);
  const double phaseSpan = frame.stochasticWiggle ? kNoisePhaseSpan : kTwoPi;
  const double frequencyVariation = frame.frequencyVariation, amountVariation = frame.amountVariation;
  const double openPhase = frame.wigglePhase;
  const double closePhase = frame.wigglePhase + frame.phaseBlur;
  for (std::size_t i = 0; i < kLanes; ++i) {
    std::uint32_t state = streams.wiggle[i];
    streams.wiggle[i] = kNextBatch(state);
    const double phase = SignedFraction(Draw(state)) * phaseSpan;
    const double frequencyFactor = 1.0 - frequencyVariation * UnitFraction(Draw(state));
    lanes.amountFactor[i] = 1.0 - amountVariation * UnitFraction(Draw(state));
    lanes.openPhase[i] = openPhase * frequencyFactor + phase;
    lanes.closePhase[i] = closePhase * frequencyFactor + phase;
  }
}

// Where a coordinate falls in the noise table: the entries of the whole coordinates around it, from the one
// before that at or below it, and the fraction beyond that.
struct NoisePlaces {
  Lanes<std::uint32_t> entries[4];
  Lanes<float> fraction;
};

// The floor is taken by truncation, which every processor has.
VINTREL_INLINE void FindPlaces(const Lanes<double>& phases, NoisePlaces& places) {
  for (std::size_t i = 0; i < kLanes; ++i) {
    const float x = static_cast<float>(phases[i]);
    const float inside = InsideInt32(x);
    const std::int32_t truncated = static_cast<std::int32_t>(inside);
    const std::int32_t below = static_cast<float>(truncated) > inside ? 1 : 0;
    const std::int32_t whole = WrapSubtract(truncated, below);
    places.fraction[i] = inside - static_cast<float>(whole);
    for (std::int32_t k = 0; k < 4; ++k) {
      places.entries[k][i] = static_cast<std::uint32_t>(NoiseIndex(WrapAdd(whole, k - 1)));
    }
  }
}

// NoiseValues::noisebspline at the places.
VINTREL_INLINE void NoiseAt(const float* table, const NoisePlaces& places, Lanes<float>& noise) {
  Lanes<float> values[4];
  for (std::size_t k = 0; k < 4; ++k) {
    for (std::size_t i = 0; i < kLanes; ++i) {
      values[k][i] = table[places.entries[k][i]];
    }
  }
  for (std::size_t i = 0; i < kLanes; ++i) {
    noise[i] = NoiseSpline(places.fraction[i], values[0][i], values[1][i], values[2][i], values[3][i]);
  }
}

VINTREL_INLINE void NoiseWiggle(const FrameField& frame, FieldLanes& lanes) {
  const float* table = frame.noiseTable.table;
  for (std::size_t i = 0; i < kLanes; ++i) {
    const float alongX = static_cast<float>(lanes.shutterFall[i] * lanes.slope[i] + lanes.shutterWind[i]);
    const float alongY = static_cast<float>(lanes.shutterFall[i]);
    const float squared = alongX * alongX + alongY * alongY;
    const float length = static_cast<float>(std::sqrt(static_cast<double>(squared) + kRestTravel));
    lanes.normalX[i] = alongY / length;
    lanes.normalY[i] = -alongX / length;
  }
  NoisePlaces places;
  FindPlaces(lanes.openPhase, places);
  NoiseAt(table, places, lanes.openWiggle);
  FindPlaces(lanes.closePhase, places);
  NoiseAt(table, places, lanes.closeWiggle);
}

// The host's cosine, one flake at a time, and for lanes without a flake a number all the same.
void CosineWiggle(const FrameField& frame, const FlakeBatch& batch, FieldLanes& lanes) {
  double (*const cosine)(double) = frame.inData->utils->ansi.cos;
  lanes.openWiggle.fill(0.0f);
  lanes.closeWiggle.fill(0.0f);
  for (std::size_t i = batch.first; i < batch.last; ++i) {
    lanes.openWiggle[i] = static_cast<float>(cosine(lanes.openPhase[i]));
    lanes.closeWiggle[i] = static_cast<float>(cosine(lanes.closePhase[i]));
  }
}

VINTREL_INLINE double WrapLane(double v, double period) {
  const double wrapped = v - static_cast<double>(TruncateLane(v / period)) * period;
  return wrapped < 0.0 ? wrapped + period : wrapped;
}

enum class WiggleKind { kNone, kCosine, kNoise };

// From the place in the unbounded field to the segment.
template <WiggleKind kind>
VINTREL_INLINE void PlaceFlakes(const FrameField& frame, const FieldLanes& lanes, FlakeBatch& batch) {
  const double fieldWidth = frame.fieldWidth, fieldHeight = frame.fieldHeight;
  const double halfFieldWidth = frame.halfFieldWidth, halfFieldHeight = frame.halfFieldHeight;
  const double halfFrameWidth = frame.halfFrameWidth, halfFrameHeight = frame.halfFrameHeight;
  const double offsetX = frame.offsetX, offsetY = frame.offsetY;
  const double offsetDeltaX = frame.offsetDeltaX, offsetDeltaY = frame.offsetDeltaY;
  const double groundY = frame.groundY;
  const double wiggleAmount = frame.wiggleAmount, wiggleAmountEnd = frame.wiggleAmountEnd;
  const float originX = frame.originX, originY = frame.originY;
  for (std::size_t i = 0; i < kLanes; ++i) {
    double x = lanes.x[i];
    double y = lanes.y[i];
    float wiggleX = 0.0f;
    float wiggleY = 0.0f;
    if constexpr (kind == WiggleKind::kCosine) {
      wiggleX = static_cast<float>(wiggleAmount * lanes.amountFactor[i]) * lanes.openWiggle[i];
      x += static_cast<double>(wiggleX);
    } else if constexpr (kind == WiggleKind::kNoise) {
      const float amount = static_cast<float>(wiggleAmount * lanes.amountFactor[i]) * lanes.openWiggle[i];
      wiggleX = lanes.normalX[i] * amount;
      wiggleY = lanes.normalY[i] * amount;
      x += static_cast<double>(wiggleX);
      y += static_cast<double>(wiggleY);
    }
    x = WrapLane(x + offsetX, fieldWidth) - halfFieldWidth;
    y = WrapLane(y + offsetY, fieldHeight) - halfFieldHeight;
    batch.drawn[i] = y > groundY ? 0.0 : 1.0;
    if constexpr (kind != WiggleKind::kNone) {
      batch.wiggle[i] = lanes.openWiggle[i];
    }

    double endX = x + lanes.shutterFall[i] * lanes.slope[i] + lanes.shutterWind[i];
    double endY = y + lanes.shutterFall[i];
    if constexpr (kind == WiggleKind::kCosine) {
      const double amount =
          static_cast<double>(lanes.closeWiggle[i]) * wiggleAmountEnd * lanes.amountFactor[i];
      endX = endX + amount - static_cast<double>(wiggleX);
    } else if constexpr (kind == WiggleKind::kNoise) {
      const float amount = lanes.closeWiggle[i] * static_cast<float>(wiggleAmountEnd * lanes.amountFactor[i]);
      endX += static_cast<double>(lanes.normalX[i] * amount - wiggleX);
      endY += static_cast<double>(lanes.normalY[i] * amount - wiggleY);
    }
    endX += offsetDeltaX;
    endY += offsetDeltaY;
    const double share = (groundY - y) / (endY - y);
    const double clippedX = x + (endX - x) * share;
    const double clippedY = y + (endY - y) * share;
    const bool lands = endY > groundY;
    endX = lands ? clippedX : endX;
    endY = lands ? clippedY : endY;

    const double scale = batch.scale[i];
    batch.stroke.startX[i] = static_cast<float>(x * scale + halfFrameWidth) + originX;
    batch.stroke.startY[i] = static_cast<float>(y * scale + halfFrameHeight) + originY;
    batch.stroke.endX[i] = static_cast<float>(endX * scale + halfFrameWidth) + originX;
    batch.stroke.endY[i] = static_cast<float>(endY * scale + halfFrameHeight) + originY;
  }
}

VINTREL_INLINE void NextBatchLanes(const FrameField& frame, BatchStreams& streams, FlakeBatch& batch) {
  FieldLanes lanes;
  DrawTravel(frame, streams, lanes, batch);
  if (!frame.wiggleOn) {
    batch.wiggle.fill(0.0f);
    PlaceFlakes<WiggleKind::kNone>(frame, lanes, batch);
    return;
  }
  DrawWiggle(frame, streams, lanes);
  if (frame.stochasticWiggle) {
    NoiseWiggle(frame, lanes);
    PlaceFlakes<WiggleKind::kNoise>(frame, lanes, batch);
  } else {
    CosineWiggle(frame, batch, lanes);
    PlaceFlakes<WiggleKind::kCosine>(frame, lanes, batch);
  }
}

}  // namespace

BatchStreams::BatchStreams(const FrameField& frame)
    : flake(FirstLanes(frame.flakeSeed, kFlakeDraws)),
      illumination(FirstLanes(frame.illumSeed, kIlluminationDraws)),
      wiggle(FirstLanes(frame.wiggleSeed, kWiggleDraws)) {}

void NextBatch(const FrameField& frame, BatchStreams& streams, FlakeBatch& batch, CpuPath path) {
  RunOnPath<NextBatchLanes>(path, frame, streams, batch);
}
