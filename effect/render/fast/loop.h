// The flake loop by batches: the calls of the host and the bits of the picture are those of the plain loop.
#pragma once

#include <optional>

#include "effect/pixel/fast/cpu_path.h"
#include "effect/render/frame/record.h"

/// Whether the fast loop may draw the frame, which is all that its stages assume: the operators are the
/// effect's own, the output's bytes can be counted in 32 bits, the host's square root is correctly rounded,
/// and the processor is little-endian, as the packing of pixels into words expects.
template <class T>
bool CanDrawFast(const FrameSetup<T>& frame);

/// DrawFlakes for frames that CanDrawFast, on a path that the machine supports.  Nothing, and nothing done,
/// without memory for the batches.
template <class T>
std::optional<PF_Err> DrawFlakesFast(const FrameSetup<T>& frame, CpuPath path);

extern template bool CanDrawFast(const FrameSetup<PF_Pixel>&);
extern template bool CanDrawFast(const FrameSetup<PF_Pixel16>&);
extern template bool CanDrawFast(const FrameSetup<PF_PixelFloat>&);
extern template std::optional<PF_Err> DrawFlakesFast(const FrameSetup<PF_Pixel>&, CpuPath);
extern template std::optional<PF_Err> DrawFlakesFast(const FrameSetup<PF_Pixel16>&, CpuPath);
extern template std::optional<PF_Err> DrawFlakesFast(const FrameSetup<PF_PixelFloat>&, CpuPath);
