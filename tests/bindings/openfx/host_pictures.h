// Pictures as the host has them, and as the effect sees them: the definitions of OpenFX written out.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <memory>

#include "minihost/picture/image.h"
#include "tests/bindings/openfx/host.h"

namespace ofxhost {

inline constexpr char kPremultiplied[] = "OfxImageAlphaPremultiplied";

inline minihost::Depth DepthOf(const Layout& layout) {
  return layout.depth == "OfxBitDepthByte"    ? minihost::Depth::kBits8
         : layout.depth == "OfxBitDepthShort" ? minihost::Depth::kBits16
                                              : minihost::Depth::kFloat;
}

/// Pixels of the effect, any, at the left margin opaque and at the right transparent.
inline minihost::Image Plate(const Layout& layout) {
  minihost::Image plate(layout.width, layout.height, DepthOf(layout));
  minihost::WithPixel(plate.PixelDepth(), [&](auto pixel) {
    using Pixel = decltype(pixel);
    constexpr double kWhite = sizeof pixel == 4 ? 255 : sizeof pixel == 8 ? 32768 : 1;
    for (int row = 0; row < plate.Height(); ++row) {
      int column = 0;
      for (Pixel& to : plate.Row<Pixel>(row)) {
        const auto channel = [&](int factor) {
          return static_cast<decltype(to.red)>(kWhite * ((column * factor + row * 7) % 64) / 63);
        };
        const double alpha = column < 9 ? 1 : column > plate.Width() - 5 ? 0 : (column + row) % 33 / 32.0;
        to = {static_cast<decltype(to.red)>(kWhite * alpha), channel(3), channel(5), channel(11)};
        ++column;
      }
    }
  });
  return plate;
}

/// A channel as the host counts it, from one of the effect's; straight from the definitions.
template <class Pixel>
double HostCount(double value) {
  return sizeof(Pixel) == 8 ? std::floor(value * 65535 / 32768 + 0.5) : value;
}

/// Calls `task` with each pixel as the host has it.
template <class Task>
void ForEachPixel(Picture& picture, const Layout& layout, Task&& task) {
  for (int y = 0; y < layout.height; ++y) {
    for (int x = 0; x < layout.width; ++x) {
      task(x, layout.height - 1 - y, PixelAt(picture, x, y));
    }
  }
}

/// The image's pixels in a picture of the host's.
inline std::unique_ptr<Picture> HostPicture(const minihost::Image& image, const Layout& layout) {
  auto picture = MakePicture(layout);
  const bool isPremultiplied = layout.alpha == kPremultiplied;
  minihost::WithPixel(image.PixelDepth(), [&](auto none) {
    using Pixel = decltype(none);
    constexpr double kWhite = sizeof none == 4 ? 255 : sizeof none == 8 ? 65535 : 1;
    ForEachPixel(*picture, layout, [&](int column, int row, std::byte* to) {
      const Pixel& pixel = image.Row<Pixel>(row)[static_cast<std::size_t>(column)];
      const double alpha = HostCount<Pixel>(pixel.alpha);
      const auto channel = [&](double color) -> decltype(pixel.red) {
        color = HostCount<Pixel>(color);
        if (isPremultiplied && (alpha != 0 || sizeof none != 16)) {
          const double product = color * alpha / kWhite;
          return static_cast<decltype(pixel.red)>(sizeof none == 16 ? product : std::floor(product + 0.5));
        }
        return static_cast<decltype(pixel.red)>(color);
      };
      const decltype(pixel.red) host[] = {channel(pixel.red), channel(pixel.green), channel(pixel.blue),
                                          static_cast<decltype(pixel.red)>(alpha)};
      std::memcpy(to, host, sizeof host);
    });
  });
  return picture;
}

/// What the effect gets to see of a host's picture.
inline minihost::Image Seen(Picture& picture, const Layout& layout) {
  minihost::Image image(layout.width, layout.height, DepthOf(layout));
  minihost::WithPixel(image.PixelDepth(), [&](auto none) {
    using Pixel = decltype(none);
    using Sample = decltype(none.red);
    constexpr double kHostWhite = sizeof none == 4 ? 255 : sizeof none == 8 ? 65535 : 1;
    ForEachPixel(picture, layout, [&](int column, int row, const std::byte* from) {
      Sample host[4];
      std::memcpy(host, from, sizeof host);
      const auto channel = [&](int i) -> Sample {
        double value = host[i];
        if (i < 3 && layout.alpha == kPremultiplied && host[3] != 0) {
          if constexpr (sizeof none == 16) {
            return host[i] / host[3];
          }
          value = std::min(std::floor(value * kHostWhite / host[3] + 0.5), kHostWhite);
        }
        return static_cast<Sample>(sizeof none == 8 ? std::floor(value * 32768 / 65535 + 0.5) : value);
      };
      image.Row<Pixel>(row)[static_cast<std::size_t>(column)] = {channel(3), channel(0), channel(1),
                                                                 channel(2)};
    });
  });
  return image;
}

}  // namespace ofxhost
