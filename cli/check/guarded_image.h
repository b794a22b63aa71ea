// A picture between pages that nobody may touch.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "minihost/picture/image.h"

namespace cli::check {

/// Which end of the picture lies against a page without access: the other one against bytes that are watched.
enum class Against { kFirstPixel, kLastPixel };

/// The layout of one.  Padding is in channels, so that pixels stay aligned to theirs.
struct Layout {
  int width = 1;
  int height = 1;
  minihost::Depth depth = minihost::Depth::kBits8;
  int padding = 0;
  Against against = Against::kLastPixel;
};

/// A read or write beyond the page ends the process; a write beside the pixels is found afterwards.
class GuardedImage {
 public:
  explicit GuardedImage(const Layout& layout);
  ~GuardedImage();
  GuardedImage(const GuardedImage&) = delete;
  GuardedImage& operator=(const GuardedImage&) = delete;

  minihost::Image& Picture() { return picture_; }
  const minihost::Image& Picture() const { return picture_; }

  /// The pixels alone, row by row without padding.
  std::vector<std::byte> Pixels() const;
  bool HasPixels(const std::vector<std::byte>& pixels) const;

  /// Every byte of every pixel.
  void Fill(std::byte value);
  void SetPixels(const std::vector<std::byte>& pixels);

  /// What was written beside the pixels: the first place, or nothing.
  std::string Damage() const;

 private:
  std::size_t RowOfPixels() const;
  std::byte* Row(int row) const { return first_ + static_cast<std::size_t>(row) * rowBytes_; }

  std::byte* pages_ = nullptr;  // with the guard pages
  std::size_t size_ = 0;
  std::byte* open_ = nullptr;  // between them
  std::size_t openSize_ = 0;
  std::byte* first_ = nullptr;
  std::size_t rowBytes_ = 0;
  minihost::Image picture_;
};

/// Stripes of every alpha, transparent, half and opaque, of changing color; of this picture's size and depth.
std::vector<std::byte> Stripes(const minihost::Image& picture);

}  // namespace cli::check
