// Shading: the size, colour and operator of one flake.
#pragma once

#include "effect/pixel/flake_random.h"
#include "effect/render/frame/record.h"
#include "effect/render/plain/field.h"

/// A flake as the rasterizer takes it.
template <class T>
struct ShadedFlake {
  float size;  // radius in scene units
  T color;
  TransferFunc<T> transfer;
};

/// Sizes and colours one flake.  Under background illumination, the channels move towards a sample of the
/// picture near the middle of the flake's path: two draws from `illumination` and one call of the sampler,
/// whose result is stored in `status`.  Without it neither is touched.
template <class T>
ShadedFlake<T> ShadeFlake(const FrameSetup<T>& frame, const FlakeSegment& segment, FlakeRandom& illumination,
                          PF_Err& status);

extern template ShadedFlake<PF_Pixel> ShadeFlake(const FrameSetup<PF_Pixel>&, const FlakeSegment&,
                                                 FlakeRandom&, PF_Err&);
extern template ShadedFlake<PF_Pixel16> ShadeFlake(const FrameSetup<PF_Pixel16>&, const FlakeSegment&,
                                                   FlakeRandom&, PF_Err&);
extern template ShadedFlake<PF_PixelFloat> ShadeFlake(const FrameSetup<PF_PixelFloat>&, const FlakeSegment&,
                                                      FlakeRandom&, PF_Err&);
