// Where each parameter stands in the host's parameter array; its id is the same number.
#pragma once

#include <cstdint>

/// Index 0 is the input layer, which the host supplies.  The order is part of every saved project and never
/// changes.
enum ParameterIndex : std::int32_t {
  kInputLayer = 0,
  kFlakes,
  kSize,
  kSizeVariation,
  kSceneDepth,
  kSpeed,
  kSpeedVariation,
  kWind,
  kWindVariation,
  kSpread,
  kWiggleGroup,
  kAmount,
  kAmountVariation,
  kFrequency,
  kFrequencyVariation,
  kStochasticWiggle,
  kFlakeFlatness,
  kWiggleGroupEnd,
  kColor,
  kOpacity,
  kIlluminationGroup,
  kInfluence,
  kSpreadWidth,
  kSpreadHeight,
  kIlluminationGroupEnd,
  kTransferMode,
  kCompositeWithOriginal,
  kExtrasGroup,
  kOffset,
  kGroundLevel,
  kEmbedDepth,
  kRandomSeed,
  kExtrasGroupEnd,
  kParameterCount,  // the input layer included
};

/// Choices of "Transfer Mode".
inline constexpr std::int32_t kTransferComposite = 1;
inline constexpr std::int32_t kTransferLighten = 2;
