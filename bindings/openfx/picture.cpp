#include "bindings/openfx/picture.h"

#include <algorithm>

#include "bindings/openfx/row.h"

namespace openfx {
namespace {

using minihost::Depth;

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

/// What lies in `part` of a row of `layer`.
template <class Pixel>
std::span<Pixel> PartOf(std::span<Pixel> row, const Rect& layer, const Rect& part) {
  return row.subspan(static_cast<std::size_t>(part.x1 - layer.x1), static_cast<std::size_t>(part.Width()));
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
      ReadRow<Pixel>(PixelAt(part.x1, y), alpha_, PartOf(image.Row<Pixel>(layer.y2 - 1 - y), layer, part));
    }
  });
}

void Picture::CopyFrom(const minihost::Image& image, const Rect& layer, const Rect& window) const {
  const Rect part = Intersection(Intersection(bounds_, layer), window);
  minihost::WithPixel(depth_, [&](auto pixel) {
    using Pixel = decltype(pixel);
    for (int y = part.y1; y < part.y2; ++y) {
      WriteRow<Pixel>(PartOf(image.Row<Pixel>(layer.y2 - 1 - y), layer, part), alpha_, PixelAt(part.x1, y));
    }
  });
}

}  // namespace openfx
