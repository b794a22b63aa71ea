// The rasterizer's second half by batches: blends a list of covered pixels, in its order.
#pragma once

#include <cstddef>

#include "effect/pixel/fast/coverage_list.h"
#include "effect/pixel/fast/cpu_path.h"
#include "effect/pixel/fast/lanes.h"

enum class BlendMode { kComposite, kLighten, kCompositeUnder };

/// Combines the entries from `begin` to `end` - 1 with the image whose first pixel is at `pixels`, as the
/// operator of that mode does.  `colors` has the flakes' pixels; their alphas are the list's.
template <class T>
void BlendList(const CoverageList<T>& list, std::size_t begin, std::size_t end, const Lanes<T>& colors,
               BlendMode mode, void* pixels, CpuPath path);

extern template void BlendList(const CoverageList<PF_Pixel>&, std::size_t, std::size_t,
                               const Lanes<PF_Pixel>&, BlendMode, void*, CpuPath);
extern template void BlendList(const CoverageList<PF_Pixel16>&, std::size_t, std::size_t,
                               const Lanes<PF_Pixel16>&, BlendMode, void*, CpuPath);
extern template void BlendList(const CoverageList<PF_PixelFloat>&, std::size_t, std::size_t,
                               const Lanes<PF_PixelFloat>&, BlendMode, void*, CpuPath);
