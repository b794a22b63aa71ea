// Shading by batches: the fast form of ShadeFlake, equal to it bit for bit.
#pragma once

#include <cstdint>

#include "effect/pixel/fast/cpu_path.h"
#include "effect/render/fast/batch.h"
#include "effect/render/fast/field.h"
#include "effect/render/frame/record.h"

/// What ShadedFlake is for one flake, but for the radius, which goes to the batch.
template <class T>
struct ShadedBatch {
  Lanes<T> colors;
  Lanes<std::int32_t> inFront;  // 1 for the frame's transfer operator, 0 behind the layer
};

/// Sizes and colours the batch, and advances the illumination stream where there is illumination.  The
/// sampler is called once for each drawn flake, in order; its last result is stored in `status`.
template <class T>
void ShadeBatch(const FrameSetup<T>& frame, BatchStreams& streams, FlakeBatch& batch, ShadedBatch<T>& shaded,
                PF_Err& status, CpuPath path);

extern template void ShadeBatch(const FrameSetup<PF_Pixel>&, BatchStreams&, FlakeBatch&,
                                ShadedBatch<PF_Pixel>&, PF_Err&, CpuPath);
extern template void ShadeBatch(const FrameSetup<PF_Pixel16>&, BatchStreams&, FlakeBatch&,
                                ShadedBatch<PF_Pixel16>&, PF_Err&, CpuPath);
extern template void ShadeBatch(const FrameSetup<PF_PixelFloat>&, BatchStreams&, FlakeBatch&,
                                ShadedBatch<PF_PixelFloat>&, PF_Err&, CpuPath);
