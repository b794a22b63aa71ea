#include "web/engine/pixels.h"

#include <algorithm>
#include <cstddef>
#include <span>

#include "cli/frames/sample_convert.h"

namespace web {
namespace {

using minihost::Depth;
using minihost::Image;

template <class Pixel>
Pixel AlphaFirst(const Pixel& page) {
  return {page.blue, page.alpha, page.red, page.green};
}

template <class Pixel>
Pixel AlphaLast(const Pixel& host) {
  return {host.red, host.green, host.blue, host.alpha};
}

template <class Reorder>
void ForEachPixel(Image& image, Reorder reorder) {
  minihost::WithPixel(image.PixelDepth(), [&](auto pixel) {
    for (int row = 0; row < image.Height(); ++row) {
      for (auto& one : image.Row<decltype(pixel)>(row)) {
        one = reorder(one);
      }
    }
  });
}

template <class From, class To>
To Converted(const From& from) {
  const auto sample = [](auto value) { return cli::ConvertSample<cli::WayOf<To>, cli::WayOf<From>>(value); };
  return {sample(from.alpha), sample(from.red), sample(from.green), sample(from.blue)};
}

}  // namespace

void ToHostOrder(Image& image) {
  ForEachPixel(image, [](const auto& pixel) { return AlphaFirst(pixel); });
}

void ToPageOrder(Image& image) {
  ForEachPixel(image, [](const auto& pixel) { return AlphaLast(pixel); });
}

Image InDepth(const Image& image, Depth depth) {
  Image converted(image.Width(), image.Height(), depth, minihost::Clearing::kNone);
  minihost::WithPixel(image.PixelDepth(), [&](auto source) {
    minihost::WithPixel(depth, [&](auto target) {
      using From = decltype(source);
      using To = decltype(target);
      for (int row = 0; row < image.Height(); ++row) {
        const std::span<const From> from = image.Row<From>(row);
        std::transform(from.begin(), from.end(), converted.Row<To>(row).begin(), Converted<From, To>);
      }
    });
  });
  return converted;
}

}  // namespace web
