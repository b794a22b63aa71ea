#include "minihost/picture/copy.h"

#include <algorithm>
#include <cstring>

#include "minihost/picture/reduction.h"

namespace minihost {
namespace {

// Sides of rectangles, free of the overflow that extreme corners would cause.
constexpr std::int64_t WidthOf(const PF_LRect& rect) noexcept {
  return std::int64_t{rect.right} - rect.left;
}
constexpr std::int64_t HeightOf(const PF_LRect& rect) noexcept {
  return std::int64_t{rect.bottom} - rect.top;
}

std::byte* PixelAt(const PF_LayerDef& world, std::int64_t column, std::int64_t row, Depth depth) noexcept {
  return static_cast<std::byte*>(world.data) + row * world.rowbytes +
         column * static_cast<std::int64_t>(BytesPerPixel(depth));
}

// 255 becomes the depth's white exactly; below it 16 bits round to the nearest value.
template <class P>
P Widen(const PF_Pixel& color) noexcept {
  if constexpr (kDepthOf<P> == Depth::kBits8) {
    return color;
  } else if constexpr (kDepthOf<P> == Depth::kBits16) {
    const auto widen = [](int channel) { return static_cast<std::uint16_t>((channel * 32768 + 127) / 255); };
    return {widen(color.alpha), widen(color.red), widen(color.green), widen(color.blue)};
  } else {
    const auto widen = [](int channel) { return static_cast<float>(channel) / 255.0f; };
    return {widen(color.alpha), widen(color.red), widen(color.green), widen(color.blue)};
  }
}

// One span of the columns or rows that an unscaled copy moves: where both the source and the target exist.
struct Overlap {
  std::int64_t source;
  std::int64_t target;
  std::int64_t count;
};

Overlap OverlapOf(std::int64_t source, std::int64_t target, std::int64_t count, std::int64_t sourceSize,
                  std::int64_t targetSize) noexcept {
  const std::int64_t skipped = std::max({std::int64_t{0}, -source, -target});
  const std::int64_t end = std::min({count, sourceSize - source, targetSize - target});
  return {source + skipped, target + skipped, std::max(end - skipped, std::int64_t{0})};
}

void CopyUnscaled(const PF_LayerDef& src, const PF_LRect& srcRect, const PF_LayerDef& dst,
                  const PF_LRect& dstRect, Depth depth) noexcept {
  const Overlap columns = OverlapOf(srcRect.left, dstRect.left, WidthOf(srcRect), src.width, dst.width);
  const Overlap rows = OverlapOf(srcRect.top, dstRect.top, HeightOf(srcRect), src.height, dst.height);
  if (columns.count == 0) {
    return;
  }

  const std::size_t bytes = static_cast<std::size_t>(columns.count) * BytesPerPixel(depth);
  // Within one buffer, a row must be read before the copy reaches it.
  const bool bottomUp = src.data == dst.data && rows.target > rows.source;
  for (std::int64_t step = 0; step < rows.count; ++step) {
    const std::int64_t row = bottomUp ? rows.count - 1 - step : step;
    std::memmove(PixelAt(dst, columns.target, rows.target + row, depth),
                 PixelAt(src, columns.source, rows.source + row, depth), bytes);
  }
}

}  // namespace

void FillPixels(const PF_Pixel& color, const PF_LRect& rect, const PF_LayerDef& world, Depth depth) noexcept {
  const PF_LRect area = Intersection(rect, BoundsOf(world));
  WithPixel(depth, [&](auto pixel) {
    using P = decltype(pixel);
    pixel = Widen<P>(color);
    for (int row = area.top; row < area.bottom; ++row) {
      std::fill_n(RowOf<P>(world, row) + area.left, WidthOf(area), pixel);
    }
  });
}

void CopyPixels(const PF_LayerDef& src, const PF_LRect& srcRect, const PF_LayerDef& dst,
                const PF_LRect& dstRect, Depth depth) {
  if (IsEmpty(srcRect) || IsEmpty(dstRect)) {
    return;
  }
  if (WidthOf(srcRect) == WidthOf(dstRect) && HeightOf(srcRect) == HeightOf(dstRect)) {
    CopyUnscaled(src, srcRect, dst, dstRect, depth);
  } else {
    ReducePixels(src, srcRect, dst, dstRect, depth);
  }
}

Image Resized(const Image& source, int width, int height) {
  Image resized(width, height, source.PixelDepth(), Clearing::kNone);
  const PF_LayerDef from = source.World();
  const PF_LayerDef to = resized.World();
  CopyPixels(from, BoundsOf(from), to, BoundsOf(to), source.PixelDepth());
  return resized;
}

}  // namespace minihost
