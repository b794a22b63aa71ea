// The render's scale: factors between scene units and render pixels.
#pragma once

#include "hostapi/commands.h"

/// Scene units are full-resolution, square-pixel layer units; render pixels are downsampled and have the
/// host's aspect.  A scene length times `xScale` (`yScale`) gives columns (rows), a length in columns (rows)
/// times `xScaleInv` (`yScaleInv`) gives scene units.
///
/// A zero numerator or denominator in the host's ratios makes factors infinite or not a number.  The record
/// carries them as they are; whoever draws with them must draw nothing.
struct FX_PARc {
  explicit FX_PARc(const PF_InData* in_data);

  double meanScaleInv;  // mean of the two inverse scales
  double aspectInv;     // a pixel's height over its width
  double xScaleInv;
  double yScaleInv;
  double xScale;
  double yScale;
  double xScaleFixed;  // in 16.16
  double yScaleFixed;

  // The same values rounded to single precision, each from its own double.
  float meanScaleInvF;
  float aspectInvF;
  float xScaleInvF;
  float yScaleInvF;
  float xScaleF;
  float yScaleF;
  float xScaleFixedF;
  float yScaleFixedF;
};
