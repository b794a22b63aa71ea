#include "bindings/openfx/spare_images.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <utility>

namespace openfx {
namespace {

// Two for each of two renders at the same time.
constexpr std::size_t kKept = 4;

}  // namespace

minihost::Image SpareImages::Take(int width, int height, minihost::Depth depth) {
  {
    const std::lock_guard lock(mutex_);
    const auto found = std::find_if(images_.begin(), images_.end(), [=](const minihost::Image& image) {
      return image.Width() == width && image.Height() == height && image.PixelDepth() == depth;
    });
    if (found != images_.end()) {
      minihost::Image image = std::move(*found);
      images_.erase(found);
      return image;
    }
  }
  return {width, height, depth, minihost::Clearing::kNone};
}

void SpareImages::Give(minihost::Image image) noexcept {
  std::list<minihost::Image> freed;  // once the lock is gone
  try {
    freed.push_back(std::move(image));
  } catch (const std::bad_alloc&) {
    return;
  }
  const std::lock_guard lock(mutex_);
  images_.splice(images_.begin(), freed);
  if (images_.size() > kKept) {
    freed.splice(freed.begin(), images_, std::prev(images_.end()));
  }
}

void SpareImages::Clear() noexcept {
  std::list<minihost::Image> freed;
  const std::lock_guard lock(mutex_);
  freed.swap(images_);
}

}  // namespace openfx
