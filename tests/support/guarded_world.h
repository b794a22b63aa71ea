// An image whose every byte beside its pixels is watched.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "hostapi/worlds.h"

/// Owns a world of `width` x `height` pixels of type T (either may be 0) with guard bytes before the first
/// row, after each row and after the last.  Rows are no multiple of a pixel long.  Pixels start out zero.
template <class T>
class GuardedWorld {
 public:
  GuardedWorld(std::int32_t width, std::int32_t height)
      : rowBytes_(static_cast<std::size_t>(width) * sizeof(T) + kPadding),
        bytes_(kMargin + rowBytes_ * static_cast<std::size_t>(height) + kMargin, kGuard) {
    world_.data = bytes_.data() + kMargin;
    world_.rowbytes = static_cast<std::int32_t>(rowBytes_);
    world_.width = width;
    world_.height = height;
    world_.extent_hint = {0, 0, width, height};
    world_.world_flags = sizeof(T) == sizeof(PF_Pixel16) ? PF_WorldFlag_DEEP : 0;
    Fill(T{});
  }
  GuardedWorld(const GuardedWorld&) = delete;
  GuardedWorld& operator=(const GuardedWorld&) = delete;

  PF_LayerDef* World() { return &world_; }

  T& At(std::int32_t column, std::int32_t row) {
    return reinterpret_cast<T*>(bytes_.data() + kMargin + static_cast<std::size_t>(row) * rowBytes_)[column];
  }

  void Fill(const T& pixel) {
    for (std::int32_t row = 0; row < world_.height; ++row) {
      for (std::int32_t column = 0; column < world_.width; ++column) {
        At(column, row) = pixel;
      }
    }
  }

  /// True while no byte outside the pixels has changed.
  bool GuardsIntact() const {
    const std::size_t pixelBytes = rowBytes_ - kPadding;
    const std::size_t end = bytes_.size() - kMargin;
    for (std::size_t i = 0; i < bytes_.size(); ++i) {
      const bool inPixel = i >= kMargin && i < end && (i - kMargin) % rowBytes_ < pixelBytes;
      if (!inPixel && bytes_[i] != kGuard) {
        return false;
      }
    }
    return true;
  }

 private:
  static constexpr std::byte kGuard{0xA5};
  static constexpr std::size_t kMargin = 64;
  static constexpr std::size_t kPadding = 3 * alignof(T);

  std::size_t rowBytes_;
  std::vector<std::byte> bytes_;
  PF_LayerDef world_{};
};
