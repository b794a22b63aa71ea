// What the first step of a smart render leaves for the second.
#pragma once

/// Lives in a host handle in `pre_render_data`.  All in the current render's pixels.
struct PreRenderGeometry {
  double extentWidth;  // of the input's largest result
  double extentHeight;
  double resultOffsetX;  // from the largest result's corner to that of the result asked for
  double resultOffsetY;
};

static_assert(sizeof(PreRenderGeometry) == 32);
