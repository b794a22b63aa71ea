// A picture that a page gave, and what has been made of it for renders.
#pragma once

#include <vector>

#include "minihost/picture/image.h"

namespace web {

class Plate {
 public:
  /// Transparent black until pixels are written.  Throws as Image does.
  Plate(int width, int height, minihost::Depth depth) : original_(width, height, depth) {}

  /// To be filled in the page's order.  Seal follows once, before the first render.
  minihost::Image& Pixels() { return original_; }
  void Seal();

  /// In this depth, at one over `divisor` of the size as the tool's --proxy reduces it.  It lives until the
  /// plate goes or the next call.
  const minihost::Image& For(int divisor, minihost::Depth depth);

 private:
  struct Version {
    int divisor;
    minihost::Image image;
  };

  minihost::Image original_;
  std::vector<Version> versions_;  // of one depth, the last that was asked for
};

}  // namespace web
