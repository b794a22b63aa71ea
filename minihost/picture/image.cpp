#include "minihost/picture/image.h"

#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>

namespace minihost {
namespace {

void RequireSide(const char* side, int value) {
  if (value < 1 || value > Image::kMaxSide) {
    throw std::invalid_argument("image " + std::string(side) + " " + std::to_string(value) +
                                " is outside 1.." + std::to_string(Image::kMaxSide) + " pixels");
  }
}

constexpr std::size_t PaddedRowBytes(int width, Depth depth) noexcept {
  const std::size_t used = static_cast<std::size_t>(width) * BytesPerPixel(depth);
  return (used + Image::kRowAlignment - 1) / Image::kRowAlignment * Image::kRowAlignment;
}

}  // namespace

Image::Image(int width, int height, Depth depth, Clearing clearing) {
  RequireSide("width", width);
  RequireSide("height", height);
  width_ = width;
  height_ = height;
  depth_ = depth;
  rowBytes_ = PaddedRowBytes(width, depth);
  const std::size_t size = rowBytes_ * static_cast<std::size_t>(height);
  pixels_.reset(static_cast<std::byte*>(::operator new (size, std::align_val_t{kRowAlignment})));
  if (clearing == Clearing::kTransparentBlack) {
    std::memset(pixels_.get(), 0, size);
  }
}

Image Image::Over(void* pixels, int width, int height, Depth depth, std::size_t rowBytes) {
  RequireSide("width", width);
  RequireSide("height", height);
  Image image;
  image.width_ = width;
  image.height_ = height;
  image.depth_ = depth;
  image.rowBytes_ = rowBytes;
  image.pixels_ = {static_cast<std::byte*>(pixels), FreeAligned(false)};
  return image;
}

Image::Image(Image&& other) noexcept
    : width_(std::exchange(other.width_, 0)),
      height_(std::exchange(other.height_, 0)),
      depth_(other.depth_),
      rowBytes_(std::exchange(other.rowBytes_, 0)),
      pixels_(std::move(other.pixels_)) {}

Image& Image::operator=(Image&& other) noexcept {
  if (this != &other) {
    width_ = std::exchange(other.width_, 0);
    height_ = std::exchange(other.height_, 0);
    depth_ = other.depth_;
    rowBytes_ = std::exchange(other.rowBytes_, 0);
    pixels_ = std::move(other.pixels_);
  }
  return *this;
}

Image Image::Clone() const {
  if (Empty()) {
    return {};
  }
  Image copy(width_, height_, depth_, Clearing::kNone);
  const std::size_t used = static_cast<std::size_t>(width_) * BytesPerPixel(depth_);
  for (std::size_t row = 0; row < static_cast<std::size_t>(height_); ++row) {
    std::memcpy(copy.Data() + row * copy.rowBytes_, Data() + row * rowBytes_, used);
  }
  return copy;
}

PF_LayerDef Image::World() const noexcept {
  PF_LayerDef world{};
  world.world_flags = depth_ == Depth::kBits16 ? PF_WorldFlag_DEEP : 0;
  world.data = pixels_.get();
  world.rowbytes = static_cast<std::int32_t>(rowBytes_);
  world.width = width_;
  world.height = height_;
  world.extent_hint = {0, 0, width_, height_};
  return world;
}

}  // namespace minihost
