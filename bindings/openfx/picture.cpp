#include "bindings/openfx/picture.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace openfx {
namespace {

using minihost::Depth;

// How the host and the effect count a channel.  Like PixelType of the effect, which bindings may not include.
template <class Pixel>
struct Way;
template <>
struct Way<PF_Pixel> {
  using Sample = std::uint8_t;
  static constexpr std::uint32_t kHostWhite = 255;
  static constexpr std::uint32_t kWhite = 255;
};
template <>
struct Way<PF_Pixel16> {
  using Sample = std::uint16_t;
  static constexpr std::uint32_t kHostWhite = 65535;
  static constexpr std::uint32_t kWhite = 32768;
};
template <>
struct Way<PF_PixelFloat> {
  using Sample = float;
};

// round(value * to / from), halves up; exact at both ends.
constexpr std::uint32_t Scale(std::uint32_t value, std::uint32_t from, std::uint32_t to) {
  return from == to ? std::min(value, to) : (std::min(value, from) * to + from / 2) / from;
}
static_assert(Scale(65535, 65535, 32768) == 32768 && Scale(32768, 32768, 65535) == 65535 &&
              Scale(0, 65535, 32768) == 0);

// Where alpha is 0 a premultiplied color is light without a surface: it passes as it is.  In whole numbers it
// cannot be told from a flake too faint for an alpha of 1, which leaves no light.
float Straight(float color, float alpha) {
  return alpha != 0 ? color / alpha : color;
}
float Premultiplied(float color, float alpha) {
  return alpha != 0 ? color * alpha : color;
}

template <class Pixel>
Pixel FromHost(const std::byte* bytes, Alpha kind) {
  using Sample = typename Way<Pixel>::Sample;
  Sample host[4];
  std::memcpy(host, bytes, sizeof host);
  if constexpr (std::is_same_v<Sample, float>) {
    const float alpha = kind == Alpha::kOpaque ? 1 : host[3];
    if (kind == Alpha::kPremultiplied) {
      return {alpha, Straight(host[0], alpha), Straight(host[1], alpha), Straight(host[2], alpha)};
    }
    return {alpha, host[0], host[1], host[2]};
  } else {
    constexpr std::uint32_t kHostWhite = Way<Pixel>::kHostWhite;
    const std::uint32_t alpha = kind == Alpha::kOpaque ? kHostWhite : host[3];
    const auto channel = [&](std::uint32_t value) {
      // Straight: round(color * white / alpha).
      if (kind == Alpha::kPremultiplied && alpha != 0) {
        value = Scale(value, alpha, kHostWhite);
      }
      return static_cast<Sample>(Scale(value, kHostWhite, Way<Pixel>::kWhite));
    };
    return {static_cast<Sample>(Scale(alpha, kHostWhite, Way<Pixel>::kWhite)), channel(host[0]),
            channel(host[1]), channel(host[2])};
  }
}

// An opaque picture is what shows on black.
template <class Pixel>
void ToHost(const Pixel& pixel, Alpha kind, std::byte* bytes) {
  using Sample = typename Way<Pixel>::Sample;
  Sample host[4];
  if constexpr (std::is_same_v<Sample, float>) {
    const auto channel = [&](float color) {
      return kind == Alpha::kStraight        ? color
             : kind == Alpha::kPremultiplied ? Premultiplied(color, pixel.alpha)
                                             : color * pixel.alpha;
    };
    host[0] = channel(pixel.red);
    host[1] = channel(pixel.green);
    host[2] = channel(pixel.blue);
    host[3] = kind == Alpha::kOpaque ? 1 : pixel.alpha;
  } else {
    constexpr std::uint32_t kHostWhite = Way<Pixel>::kHostWhite;
    const std::uint32_t alpha = Scale(pixel.alpha, Way<Pixel>::kWhite, kHostWhite);
    const auto channel = [&](std::uint32_t color) {
      color = Scale(color, Way<Pixel>::kWhite, kHostWhite);
      return static_cast<Sample>(kind == Alpha::kStraight ? color : Scale(color, kHostWhite, alpha));
    };
    host[0] = channel(pixel.red);
    host[1] = channel(pixel.green);
    host[2] = channel(pixel.blue);
    host[3] = static_cast<Sample>(kind == Alpha::kOpaque ? kHostWhite : alpha);
  }
  std::memcpy(bytes, host, sizeof host);
}

Alpha AlphaOf(const std::string& text) {
  return text == "OfxImageAlphaPremultiplied" ? Alpha::kPremultiplied
         : text == "OfxImageOpaque"           ? Alpha::kOpaque
                                              : Alpha::kStraight;
}

Depth DepthOf(const Properties& picture) {
  const std::string depth = picture.String("OfxImageEffectPropPixelDepth");
  const std::string components = picture.String("OfxImageEffectPropComponents");
  if (components != "OfxImageComponentRGBA") {
    throw ActionError{kErrImageFormat, "Vintrel draws on RGBA, not on " + components};
  }
  if (depth == "OfxBitDepthByte") {
    return Depth::kBits8;
  }
  if (depth == "OfxBitDepthShort") {
    return Depth::kBits16;
  }
  if (depth == "OfxBitDepthFloat") {
    return Depth::kFloat;
  }
  throw ActionError{kErrImageFormat, "Vintrel draws on 8 and 16 bits and on float, not on " + depth};
}

}  // namespace

Rect Intersection(const Rect& a, const Rect& b) {
  return {std::max(a.x1, b.x1), std::max(a.y1, b.y1), std::min(a.x2, b.x2), std::min(a.y2, b.y2)};
}

Rect RectOf(const Properties& properties, const char* name) {
  return {properties.Int(name, 0, 0), properties.Int(name, 0, 1), properties.Int(name, 0, 2),
          properties.Int(name, 0, 3)};
}

Picture::Picture(const Suites& suites, OfxImageEffectHandle effect, const char* clip, double time)
    : suites_(suites) {
  OfxImageClipHandle clipHandle = nullptr;
  OfxPropertySetHandle clipSet = nullptr;
  if (suites.effect->clipGetHandle(effect, clip, &clipHandle, &clipSet) != kOk || clipHandle == nullptr) {
    return;
  }
  if (suites.effect->clipGetImage(clipHandle, time, nullptr, &handle_) != kOk) {
    handle_ = nullptr;
  }
  if (handle_ == nullptr) {
    return;
  }
  const Properties image(suites, handle_);
  try {
    depth_ = DepthOf(image);
  } catch (...) {
    suites_.effect->clipReleaseImage(handle_);
    throw;
  }
  data_ = static_cast<std::byte*>(image.Pointer("OfxImagePropData"));
  rowBytes_ = image.Int("OfxImagePropRowBytes", 0);
  bounds_ = RectOf(image, "OfxImagePropBounds");
  region_ = RectOf(image, "OfxImagePropRegionOfDefinition");
  alpha_ = AlphaOf(image.String("OfxImageEffectPropPreMultiplication"));
  pixelAspectRatio_ = image.Double("OfxImagePropPixelAspectRatio", 1);
  if (data_ == nullptr) {
    bounds_ = {};
  }
}

Picture::~Picture() {
  if (handle_ != nullptr) {
    suites_.effect->clipReleaseImage(handle_);
  }
}

std::byte* Picture::PixelAt(int x, int y) const {
  return data_ + std::ptrdiff_t{y - bounds_.y1} * rowBytes_ +
         (x - bounds_.x1) * static_cast<std::ptrdiff_t>(BytesPerPixel(depth_));
}

void Picture::CopyTo(minihost::Image& image, const Rect& layer) const {
  const Rect part = Intersection(bounds_, layer);
  minihost::WithPixel(depth_, [&](auto pixel) {
    using Pixel = decltype(pixel);
    for (int y = part.y1; y < part.y2; ++y) {
      const std::span<Pixel> row = image.Row<Pixel>(layer.y2 - 1 - y);
      const std::byte* from = PixelAt(part.x1, y);
      for (int x = part.x1; x < part.x2; ++x, from += sizeof(Pixel)) {
        row[static_cast<std::size_t>(x - layer.x1)] = FromHost<Pixel>(from, alpha_);
      }
    }
  });
}

void Picture::CopyFrom(const minihost::Image& image, const Rect& layer, const Rect& window) const {
  const Rect part = Intersection(Intersection(bounds_, layer), window);
  minihost::WithPixel(depth_, [&](auto pixel) {
    using Pixel = decltype(pixel);
    for (int y = part.y1; y < part.y2; ++y) {
      const std::span<const Pixel> row = image.Row<Pixel>(layer.y2 - 1 - y);
      std::byte* to = PixelAt(part.x1, y);
      for (int x = part.x1; x < part.x2; ++x, to += sizeof(Pixel)) {
        ToHost<Pixel>(row[static_cast<std::size_t>(x - layer.x1)], alpha_, to);
      }
    }
  });
}

}  // namespace openfx
