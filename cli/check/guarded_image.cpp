#include "cli/check/guarded_image.h"

#include <fmt/format.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <new>

namespace cli::check {
namespace {

constexpr std::byte kWatched{0xA7};

std::size_t ChannelBytes(minihost::Depth depth) {
  return minihost::BytesPerPixel(depth) / 4;
}

}  // namespace

GuardedImage::GuardedImage(const Layout& layout) {
  const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  const std::size_t row = static_cast<std::size_t>(layout.width) * minihost::BytesPerPixel(layout.depth);
  rowBytes_ = row + static_cast<std::size_t>(layout.padding) * ChannelBytes(layout.depth);
  // The last row has no padding: behind its last pixel is the end.
  const std::size_t used = rowBytes_ * static_cast<std::size_t>(layout.height - 1) + row;
  openSize_ = (used + page - 1) / page * page;
  size_ = openSize_ + 2 * page;
  void* const pages = ::mmap(nullptr, size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) {
    throw std::bad_alloc();
  }
  pages_ = static_cast<std::byte*>(pages);
  open_ = pages_ + page;
  if (::mprotect(open_, openSize_, PROT_READ | PROT_WRITE) != 0) {
    ::munmap(pages_, size_);
    throw std::bad_alloc();
  }
  std::memset(open_, static_cast<int>(kWatched), openSize_);
  first_ = layout.against == Against::kFirstPixel ? open_ : open_ + openSize_ - used;
  picture_ = minihost::Image::Over(first_, layout.width, layout.height, layout.depth, rowBytes_);
  Fill(std::byte{0});
}

GuardedImage::~GuardedImage() {
  ::munmap(pages_, size_);
}

std::size_t GuardedImage::RowOfPixels() const {
  return static_cast<std::size_t>(picture_.Width()) * minihost::BytesPerPixel(picture_.PixelDepth());
}

std::vector<std::byte> GuardedImage::Pixels() const {
  std::vector<std::byte> pixels;
  pixels.reserve(RowOfPixels() * static_cast<std::size_t>(picture_.Height()));
  for (int row = 0; row < picture_.Height(); ++row) {
    pixels.insert(pixels.end(), Row(row), Row(row) + RowOfPixels());
  }
  return pixels;
}

bool GuardedImage::HasPixels(const std::vector<std::byte>& pixels) const {
  const std::size_t row = RowOfPixels();
  for (int y = 0; y < picture_.Height(); ++y) {
    if (std::memcmp(Row(y), pixels.data() + static_cast<std::size_t>(y) * row, row) != 0) {
      return false;
    }
  }
  return true;
}

void GuardedImage::Fill(std::byte value) {
  for (int row = 0; row < picture_.Height(); ++row) {
    std::memset(Row(row), static_cast<int>(value), RowOfPixels());
  }
}

void GuardedImage::SetPixels(const std::vector<std::byte>& pixels) {
  for (int row = 0; row < picture_.Height(); ++row) {
    std::memcpy(Row(row), pixels.data() + static_cast<std::size_t>(row) * RowOfPixels(), RowOfPixels());
  }
}

std::string GuardedImage::Damage() const {
  const std::size_t row = RowOfPixels();
  const auto before = static_cast<std::size_t>(first_ - open_);
  for (std::size_t i = 0; i < openSize_; ++i) {
    const std::size_t at = i - before;
    const bool isPixel =
        i >= before && at / rowBytes_ < static_cast<std::size_t>(picture_.Height()) && at % rowBytes_ < row;
    if (!isPixel && open_[i] != kWatched) {
      return i < before ? fmt::format("wrote {} bytes before the first pixel", before - i)
                        : fmt::format("wrote {} bytes behind the end of row {}", at % rowBytes_ - row,
                                      at / rowBytes_);
    }
  }
  return {};
}

std::vector<std::byte> Stripes(const minihost::Image& picture) {
  return minihost::WithPixel(picture.PixelDepth(), [&](auto pixel) {
    using P = decltype(pixel);
    const auto channel = [](int step) {
      const double value = step % 8 / 7.0;
      using Channel = decltype(P::alpha);
      const double white = minihost::kDepthOf<P> == minihost::Depth::kBits8    ? 255
                           : minihost::kDepthOf<P> == minihost::Depth::kBits16 ? 32768
                                                                               : 1;
      return static_cast<Channel>(value * white);
    };
    constexpr int kAlphas[] = {7, 0, 3};
    std::vector<std::byte> bytes;
    for (int y = 0; y < picture.Height(); ++y) {
      for (int x = 0; x < picture.Width(); ++x) {
        const P striped{channel(kAlphas[x / 4 % 3]), channel(x + y), channel(x * y), channel(3 * y)};
        const auto* const first = reinterpret_cast<const std::byte*>(&striped);
        bytes.insert(bytes.end(), first, first + sizeof striped);
      }
    }
    return bytes;
  });
}

}  // namespace cli::check
