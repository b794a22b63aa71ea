#include "effect/render/plain/field.h"

#include "effect/pixel/integer.h"
#include "effect/render/frame/flake_draws.h"

namespace {

// In double precision, as all places are until they reach the segment.
struct Place {
  double x;
  double y;
};

// How one flake moves, apart from its wiggle.
struct Travel {
  Place place;   // in the unbounded field, when the shutter opens
  double depth;  // behind the image plane
  double slope;  // sideways for each unit of fall
  double shutterFall;
  double shutterWind;
};

// A flake's wiggle and where it has moved the flake when the shutter opens.
struct Wiggle {
  double phase;
  double frequencyFactor;
  double amountFactor;
  float value;  // when the shutter opens
  float dx;
  float dy;
  float normalX;  // unit normal of the travel, along which the noise wiggle moves
  float normalY;
};

// v moved into [0, period) by whole periods; a quotient beyond 32 bits leaves it where it is.
double Wrap(double v, double period) {
  const double wrapped = v - TruncateToInt32(v / period) * period;
  return wrapped < 0.0 ? wrapped + period : wrapped;
}

Travel DrawTravel(const FrameField& frame, FlakeRandom& random) {
  const double x0 = UnitFraction(random.Next()) * frame.fieldWidth;
  const double y0 = UnitFraction(random.Next()) * frame.fieldHeight;
  const double depth = UnitFraction(random.Next()) * frame.sceneDepth;
  const double speedFactor = 1.0 + frame.speedVariation * SignedFraction(random.Next());
  const double slope = frame.spreadTan * SignedFraction(random.Next());
  const double windFactor = 1.0 + frame.windVariation * SignedFraction(random.Next());
  const double fall = frame.fallDistance * speedFactor;
  return {.place = {x0 + slope * fall + frame.windDistance * windFactor, y0 + fall},
          .depth = depth,
          .slope = slope,
          .shutterFall = frame.fallBlur * speedFactor,
          .shutterWind = frame.windBlur * windFactor};
}

Wiggle DrawWiggle(const FrameField& frame, FlakeRandom& random) {
  Wiggle wiggle = {};
  const double phaseSpan = frame.stochasticWiggle ? kNoisePhaseSpan : kTwoPi;
  wiggle.phase = SignedFraction(random.Next()) * phaseSpan;
  wiggle.frequencyFactor = 1.0 - frame.frequencyVariation * UnitFraction(random.Next());
  wiggle.amountFactor = 1.0 - frame.amountVariation * UnitFraction(random.Next());
  return wiggle;
}

// The wiggle's value, -1..1, at a phase common to all flakes.
float WiggleValue(const FrameField& frame, const Wiggle& wiggle, double commonPhase) {
  const double phase = commonPhase * wiggle.frequencyFactor + wiggle.phase;
  return frame.stochasticWiggle ? frame.noiseTable.noisebspline(static_cast<float>(phase))
                                : static_cast<float>(frame.inData->utils->ansi.cos(phase));
}

// Sets the wiggle of the opening shutter.  The cosine moves the flake sideways, the noise across its travel.
void OpenWiggle(const FrameField& frame, const Travel& travel, Wiggle& wiggle) {
  if (frame.stochasticWiggle) {
    const float alongX = static_cast<float>(travel.shutterFall * travel.slope + travel.shutterWind);
    const float alongY = static_cast<float>(travel.shutterFall);
    const float squared = alongX * alongX + alongY * alongY;
    const float length =
        static_cast<float>(frame.inData->utils->ansi.sqrt(static_cast<double>(squared) + kRestTravel));
    wiggle.normalX = alongY / length;
    wiggle.normalY = -alongX / length;
  } else {
    wiggle.normalX = 1.0f;
    wiggle.normalY = 0.0f;
  }
  wiggle.value = WiggleValue(frame, wiggle, frame.wigglePhase);
  const float amount = static_cast<float>(frame.wiggleAmount * wiggle.amountFactor) * wiggle.value;
  wiggle.dx = wiggle.normalX * amount;
  wiggle.dy = wiggle.normalY * amount;
}

// Puts the wiggle of the closing shutter in the place of the opening one's.  The cosine stays in double
// precision here, the noise in single.
void CloseWiggle(const FrameField& frame, const Wiggle& wiggle, Place& end) {
  const float value = WiggleValue(frame, wiggle, frame.wigglePhase + frame.phaseBlur);
  if (frame.stochasticWiggle) {
    const float amount = value * static_cast<float>(frame.wiggleAmountEnd * wiggle.amountFactor);
    end.x += static_cast<double>(wiggle.normalX * amount - wiggle.dx);
    end.y += static_cast<double>(wiggle.normalY * amount - wiggle.dy);
  } else {
    const double amount = static_cast<double>(value) * frame.wiggleAmountEnd * wiggle.amountFactor;
    end.x = end.x + amount - static_cast<double>(wiggle.dx);
  }
}

// From field coordinates to the output buffer's; the origin's shift is added in single precision.
FloatPoint Project(const FrameField& frame, const Place& place, double scale) {
  return {static_cast<float>(place.x * scale + frame.halfFrameWidth) + frame.originX,
          static_cast<float>(place.y * scale + frame.halfFrameHeight) + frame.originY};
}

}  // namespace

bool NextFlake(const FrameField& frame, FlakeStreams& streams, FlakeSegment& segment) {
  const Travel travel = DrawTravel(frame, streams.flake);
  Place start = travel.place;
  Wiggle wiggle = {};
  if (frame.wiggleOn) {
    wiggle = DrawWiggle(frame, streams.wiggle);
    OpenWiggle(frame, travel, wiggle);
    start.x += static_cast<double>(wiggle.dx);
    start.y += static_cast<double>(wiggle.dy);
  }
  start.x = Wrap(start.x + frame.offsetX, frame.fieldWidth) - frame.halfFieldWidth;
  start.y = Wrap(start.y + frame.offsetY, frame.fieldHeight) - frame.halfFieldHeight;

  segment.sizeDraw = streams.flake.Next();
  if (start.y > frame.groundY) {
    for (std::uint32_t draw = 0; draw < kIlluminationDraws; ++draw) {
      streams.illumination.Next();
    }
    return false;
  }

  // The end is not wrapped again: the path leaves the field where the flake does.
  Place end = {start.x + travel.shutterFall * travel.slope + travel.shutterWind,
               start.y + travel.shutterFall};
  if (frame.wiggleOn) {
    CloseWiggle(frame, wiggle, end);
  }
  end.x += frame.offsetDeltaX;
  end.y += frame.offsetDeltaY;
  if (end.y > frame.groundY) {
    const double t = (frame.groundY - start.y) / (end.y - start.y);
    end.x = start.x + (end.x - start.x) * t;
    end.y = start.y + (end.y - start.y) * t;
  }

  segment.depth = frame.frameMax + travel.depth;
  segment.scale = frame.frameMax / segment.depth;
  segment.start = Project(frame, start, segment.scale);
  segment.end = Project(frame, end, segment.scale);
  segment.wiggle = wiggle.value;
  return true;
}
