// Rectangles and rows of a world, the record that lends out the pixels of an image.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "hostapi/types.h"
#include "hostapi/worlds.h"

namespace minihost {

/// Right and bottom are the first column and row beyond a rectangle.
constexpr bool IsEmpty(const PF_LRect& rect) noexcept {
  return rect.left >= rect.right || rect.top >= rect.bottom;
}

/// The overlap of two rectangles; every empty overlap is {0, 0, 0, 0}.
constexpr PF_LRect Intersection(const PF_LRect& a, const PF_LRect& b) noexcept {
  const PF_LRect both{std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
                      std::min(a.bottom, b.bottom)};
  return IsEmpty(both) ? PF_LRect{} : both;
}

/// The whole of a world.
inline PF_LRect BoundsOf(const PF_LayerDef& world) noexcept {
  return {0, 0, world.width, world.height};
}

/// The first pixel of a row, 0 being the topmost.  `P` is the pixel type of the world's depth, const where
/// the pixels are not written to.
template <class P>
P* RowOf(const PF_LayerDef& world, std::int32_t row) noexcept {
  return reinterpret_cast<P*>(static_cast<std::byte*>(world.data) + std::int64_t{row} * world.rowbytes);
}

}  // namespace minihost
