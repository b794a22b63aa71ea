// Images between two renders: memory that is new to a process costs as much as a pass over its pixels.
#pragma once

#include <list>
#include <mutex>
#include <utility>

#include "minihost/picture/image.h"

namespace openfx {

/// For all uses in a process, on any thread.
class SpareImages {
 public:
  /// Of any content.  Throws as minihost::Image does.
  minihost::Image Take(int width, int height, minihost::Depth depth);

  /// Keeps the image for a later render; of more than a few, those given first are freed.
  void Give(minihost::Image image) noexcept;

  /// Frees all.
  void Clear() noexcept;

 private:
  std::mutex mutex_;
  std::list<minihost::Image> images_;  // the last given first
};

/// An image on loan, given back at the end of its scope.
class BorrowedImage {
 public:
  BorrowedImage(SpareImages& spare, int width, int height, minihost::Depth depth)
      : spare_(spare), image_(spare.Take(width, height, depth)) {}
  ~BorrowedImage() { spare_.Give(std::move(image_)); }
  BorrowedImage(const BorrowedImage&) = delete;
  BorrowedImage& operator=(const BorrowedImage&) = delete;

  minihost::Image& operator*() { return image_; }

 private:
  SpareImages& spare_;
  minihost::Image image_;
};

}  // namespace openfx
