#include "web/engine/plate.h"

#include <algorithm>
#include <utility>

#include "minihost/picture/copy.h"
#include "web/engine/pixels.h"

namespace web {

using minihost::Depth;
using minihost::Image;

void Plate::Seal() {
  ToHostOrder(original_);
}

const Image& Plate::For(int divisor, Depth depth) {
  const bool isOriginal = depth == original_.PixelDepth();
  if (divisor == 1 && isOriginal) {
    return original_;
  }
  std::erase_if(versions_, [&](const Version& version) { return version.image.PixelDepth() != depth; });
  const auto known = std::ranges::find(versions_, divisor, &Version::divisor);
  if (known != versions_.end()) {
    return known->image;
  }
  // The depth first and then the size, as the tool does.
  const Image* whole = isOriginal ? &original_ : nullptr;
  Image converted;
  if (whole == nullptr) {
    converted = InDepth(original_, depth);
    whole = &converted;
  }
  if (divisor > 1) {
    versions_.push_back({divisor, minihost::Resized(*whole, std::max(1, whole->Width() / divisor),
                                                    std::max(1, whole->Height() / divisor))});
  } else {
    versions_.push_back({divisor, std::move(converted)});
  }
  return versions_.back().image;
}

}  // namespace web
