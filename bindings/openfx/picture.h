// Pictures of the host's, and the way of their pixels into the effect's and back.
#pragma once

#include <cstddef>

#include "bindings/openfx/host.h"
#include "bindings/openfx/row.h"
#include "minihost/picture/image.h"

namespace openfx {

/// Pixels, x1 and y1 inside, x2 and y2 outside; y counts upwards.
struct Rect {
  int x1 = 0, y1 = 0, x2 = 0, y2 = 0;
  int Width() const { return x2 - x1; }
  int Height() const { return y2 - y1; }
  bool IsEmpty() const { return x1 >= x2 || y1 >= y2; }
  bool Contains(const Rect& other) const {
    return x1 <= other.x1 && y1 <= other.y1 && x2 >= other.x2 && y2 >= other.y2;
  }
};

Rect Intersection(const Rect& a, const Rect& b);

/// Four ints of a property.
Rect RectOf(const Properties& properties, const char* name);

/// A picture on loan from a clip at a time; handed back at the end of its scope.
class Picture {
 public:
  /// Throws ActionError for pixels that are not RGBA of 8, 16 or 32 bits.
  Picture(const Suites& suites, OfxImageEffectHandle effect, const char* clip, double time);
  ~Picture();
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;

  /// False where the clip is not connected or has no picture at this time.  Then it has nothing else either.
  bool IsThere() const { return handle_ != nullptr; }

  const Rect& Bounds() const { return bounds_; }
  const Rect& RegionOfDefinition() const { return region_; }
  minihost::Depth PixelDepth() const { return depth_; }
  double PixelAspectRatio() const { return pixelAspectRatio_; }

  /// The picture's part of `layer`, of which `image` is the whole; the rest is left as it is.  Rows of images
  /// run from the top.
  void CopyTo(minihost::Image& image, const Rect& layer) const;

  /// The picture takes over what of `image`, which is the whole of `layer`, lies in `window`.
  void CopyFrom(const minihost::Image& image, const Rect& layer, const Rect& window) const;

 private:
  std::byte* PixelAt(int x, int y) const;

  const Suites& suites_;
  OfxPropertySetHandle handle_ = nullptr;
  std::byte* data_ = nullptr;  // of the pixel at bounds_.x1, bounds_.y1
  std::ptrdiff_t rowBytes_ = 0;
  Rect bounds_;
  Rect region_;
  minihost::Depth depth_ = minihost::Depth::kBits8;
  Alpha alpha_ = Alpha::kStraight;
  double pixelAspectRatio_ = 1;
};

}  // namespace openfx
