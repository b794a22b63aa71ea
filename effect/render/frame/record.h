// Everything that the flake loop needs for one frame.
//
// The frame setup fills the record once; the loop only reads it.  With a filled record the loop runs on plain
// images, and reaches no host service but those that the record names.
//
// Lengths are in scene units (full-resolution, square-pixel layer units), x to the right, y downwards, depth
// away from the eye, which lies frameMax in front of the image plane.  Fractions are percentages times 0.01.
#pragma once

#include <cstdint>

#include "effect/pixel/noise.h"
#include "effect/pixel/transfer.h"
#include "effect/render/frame/scale.h"
#include "hostapi/commands.h"
#include "hostapi/suites.h"

/// What is the same in every pixel type.
struct FrameField {
  FX_PARc scale;
  PF_InData* inData = nullptr;  // for its reference, progress, cos and sqrt

  // Times in ticks; used while the record is filled.
  std::int32_t renderTime = 0;
  std::int32_t timeStep = 0;
  std::int32_t localTimeStep = 0;
  std::int32_t shutterEndTime = 0;
  std::uint32_t timeScale = 0;
  double frameSeconds = 0.0;  // localTimeStep
  double stepSeconds = 0.0;   // timeStep

  // Parameters.
  std::int32_t flakeCount = 0;  // at least 1 when the loop runs
  double sceneDepth = 0.0;      // of the field behind the image plane
  double flakeSize = 0.0;       // radius
  double sizeVariation = 0.0;
  double speedVariation = 0.0;
  double windVariation = 0.0;
  double amountVariation = 0.0;
  double frequencyVariation = 0.0;
  double wiggleAmount = 0.0;     // when the shutter opens
  double wiggleAmountEnd = 0.0;  // when it closes
  bool stochasticWiggle = false;
  float flatness = 0.0f;
  float opacity = 0.0f;
  float influence = 0.0f;
  float influenceScale = 0.0f;  // influence for each step of sampled alpha
  float spreadWidth = 0.0f;     // half-extents of the illumination jitter
  float spreadHeight = 0.0f;
  std::int32_t transferMode = 0;
  bool compositeWithOriginal = false;
  double embedDepth = 0.0;
  double groundLevel = 0.0;
  std::int32_t randomSeed = 0;

  // Geometry.
  double frameWidth = 0.0;
  double frameHeight = 0.0;
  double halfFrameWidth = 0.0;
  double halfFrameHeight = 0.0;
  float originX = 0.0f;  // from frame coordinates to those of the output buffer
  float originY = 0.0f;
  double frameMax = 0.0;    // the longer side of the frame
  double fieldWidth = 0.0;  // period of the flake field: the view's cross-section at its far end
  double fieldHeight = 0.0;
  double halfFieldWidth = 0.0;
  double halfFieldHeight = 0.0;
  double offsetX = 0.0;  // when the shutter opens
  double offsetY = 0.0;
  double offsetDeltaX = 0.0;  // until it closes
  double offsetDeltaY = 0.0;
  double groundY = 0.0;        // below the field's centre line
  double embedDistance = 0.0;  // flakes deeper than this go behind the layer
  double spreadTan = 0.0;      // tangent of half the Spread angle

  // Motion up to the frame, and during the shutter interval ("blur").
  double fallDistance = 0.0;
  double windDistance = 0.0;
  double fallBlur = 0.0;
  double windBlur = 0.0;
  double wigglePhase = 0.0;  // radians, or noise-table units when the table is built
  double phaseBlur = 0.0;
  bool wiggleOn = false;

  // Start states of the random streams.
  std::int32_t flakeSeed = 0;
  std::int32_t illumSeed = 0;
  std::int32_t wiggleSeed = 0;

  NoiseValues<float> noiseTable = {};  // filled only when wiggleOn and stochasticWiggle

  PF_LayerDef* illumWorld = nullptr;  // sampled for the background illumination
  PF_LayerDef* output = nullptr;      // already holds the background
};

template <class T>
using SampleFunc = PF_Err (*)(PF_ProgPtr effect_ref, PF_Fixed x, PF_Fixed y, const PF_SampPB* params, T* dst);

/// The record for pixels of type T.  Owns its noise table and borrows everything else.
template <class T>
struct FrameSetup : FrameField {
  T flakeColor = {};      // alpha above 0 when the loop runs
  float flakeRed = 0.0f;  // float renders: the channels of flakeColor
  float flakeGreen = 0.0f;
  float flakeBlue = 0.0f;
  TransferFunc<T> transferOp = nullptr;  // in front of the layer
  TransferFunc<T> underOp = nullptr;     // behind it
  SampleFunc<T> sampleFn = nullptr;      // between the pixels of illumWorld
};
