// An image in the host's memory: pixels of one depth in the order alpha, red, green, blue, straight alpha.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>

#include "hostapi/types.h"
#include "hostapi/worlds.h"

namespace minihost {

/// Bits a channel.  Opaque and white are 255, 32768 and 1.0.
enum class Depth { kBits8, kBits16, kFloat };

/// Calls `task` with one zero pixel of the type that `depth` stands for, so that a template can be chosen by
/// a depth that is known only at run time: `WithPixel(depth, [&](auto pixel) { Task<decltype(pixel)>(); })`.
template <class Task>
constexpr decltype(auto) WithPixel(Depth depth, Task&& task) {
  switch (depth) {
    case Depth::kBits8:
      return task(PF_Pixel{});
    case Depth::kBits16:
      return task(PF_Pixel16{});
    case Depth::kFloat:
      break;
  }
  return task(PF_PixelFloat{});
}

/// 4, 8 or 16.
constexpr std::size_t BytesPerPixel(Depth depth) noexcept {
  return WithPixel(depth, [](auto pixel) { return sizeof pixel; });
}

/// The code by which the world suite names the depth.
constexpr PF_PixelFormat PixelFormatOf(Depth depth) noexcept {
  switch (depth) {
    case Depth::kBits8:
      return PF_PixelFormat_ARGB32;
    case Depth::kBits16:
      return PF_PixelFormat_ARGB64;
    case Depth::kFloat:
      break;
  }
  return PF_PixelFormat_ARGB128;
}

/// The depth whose pixels are `P`.
template <class P>
inline constexpr Depth kDepthOf = sizeof(P) == sizeof(PF_Pixel)     ? Depth::kBits8
                                  : sizeof(P) == sizeof(PF_Pixel16) ? Depth::kBits16
                                                                    : Depth::kFloat;

enum class Clearing {
  kTransparentBlack,  // every byte zero, padding included
  kNone,              // pixels and padding start undefined
};

/// Owns its pixels, but for one made by Over.  Rows run from the top and begin on 64-byte boundaries.  Moving
/// leaves the source empty (0 x 0); a copy is made by name, with Clone.
class Image {
 public:
  /// Positions are 16.16 fixed point everywhere, so no side can be longer.
  static constexpr int kMaxSide = 32767;
  static constexpr std::size_t kRowAlignment = 64;

  Image() = default;

  /// `width` and `height` are 1..kMaxSide pixels.  Throws std::invalid_argument outside of that, naming the
  /// value and the limit, and std::bad_alloc without memory.
  Image(int width, int height, Depth depth, Clearing clearing = Clearing::kTransparentBlack);

  /// An image in memory that somebody else keeps for as long as it lives.  Rows are `rowBytes` apart, which
  /// holds at least a row of pixels and is a whole number of channels.  Throws as the constructor does.
  static Image Over(void* pixels, int width, int height, Depth depth, std::size_t rowBytes);

  Image(Image&& other) noexcept;
  Image& operator=(Image&& other) noexcept;
  ~Image() = default;

  /// An image of its own with the same pixels; empty from an empty one.  Throws std::bad_alloc.
  Image Clone() const;

  int Width() const noexcept { return width_; }
  int Height() const noexcept { return height_; }
  Depth PixelDepth() const noexcept { return depth_; }
  bool Empty() const noexcept { return width_ == 0; }

  /// Bytes from one row to the next; a multiple of kRowAlignment where the image owns its pixels.
  std::size_t RowBytes() const noexcept { return rowBytes_; }

  /// The first byte of the first row; null in an empty image.
  std::byte* Data() noexcept { return pixels_.get(); }
  const std::byte* Data() const noexcept { return pixels_.get(); }

  /// The `Width()` pixels of `row` (0 is the topmost).  `P` is the pixel type of the image's depth.
  template <class P>
  std::span<P> Row(int row) noexcept {
    assert(kDepthOf<P> == depth_ && row >= 0 && row < height_);
    return {reinterpret_cast<P*>(Data() + static_cast<std::size_t>(row) * rowBytes_),
            static_cast<std::size_t>(width_)};
  }
  template <class P>
  std::span<const P> Row(int row) const noexcept {
    assert(kDepthOf<P> == depth_ && row >= 0 && row < height_);
    return {reinterpret_cast<const P*>(Data() + static_cast<std::size_t>(row) * rowBytes_),
            static_cast<std::size_t>(width_)};
  }

  /// A record that borrows the pixels, with the whole image as its extent hint.  The record has no way to
  /// say "read only": whoever passes on the world of a const image answers for nobody writing to it.
  PF_LayerDef World() const noexcept;

 private:
  struct FreeAligned {
    FreeAligned() noexcept : isOwner(true) {}
    explicit FreeAligned(bool owner) noexcept : isOwner(owner) {}
    bool isOwner;
    void operator()(std::byte* pixels) const noexcept {
      if (isOwner) {
        ::operator delete (pixels, std::align_val_t{kRowAlignment});
      }
    }
  };

  int width_ = 0;
  int height_ = 0;
  Depth depth_ = Depth::kBits8;
  std::size_t rowBytes_ = 0;
  std::unique_ptr<std::byte[], FreeAligned> pixels_;
};

}  // namespace minihost
