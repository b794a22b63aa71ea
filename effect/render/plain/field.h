// The flake field: where each flake of a frame is, from its random attributes and the travel up to the frame.
//
// No flake remembers anything.  The same record and streams give the same field, whatever was rendered
// before.
#pragma once

#include <cstdint>

#include "effect/pixel/flake_random.h"
#include "effect/pixel/rasterizer.h"
#include "effect/render/frame/record.h"

/// The random streams of one pass; frame/flake_draws.h says what a flake takes from each.  They are apart so
/// that lighting moves no flake and the wiggle changes no other attribute.
struct FlakeStreams {
  explicit FlakeStreams(const FrameField& frame)
      : flake(frame.flakeSeed), illumination(frame.illumSeed), wiggle(frame.wiggleSeed) {}

  FlakeRandom flake;
  FlakeRandom illumination;
  FlakeRandom wiggle;
};

/// One flake above the ground.  Points are in scene units of the output buffer.
struct FlakeSegment {
  FloatPoint start;       // centre when the shutter opens
  FloatPoint end;         // centre when it closes
  double depth;           // frameMax to frameMax + sceneDepth
  double scale;           // perspective: frameMax / depth
  float wiggle;           // -1..1 when the shutter opens; 0 while the wiggle is off
  std::int32_t sizeDraw;  // 0..32767
};

/// Advances the streams by one flake and fills `segment`.  False when the flake lies below the ground and is
/// not drawn; its draws are taken all the same, so that the flakes after it stay where they are.
bool NextFlake(const FrameField& frame, FlakeStreams& streams, FlakeSegment& segment);
