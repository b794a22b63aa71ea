// Pixels as pages hold them, red first and alpha last, against pixels as hosts hold them, alpha first.  Both
// are straight, and both count alike in each depth.
#pragma once

#include "minihost/picture/image.h"

namespace web {

/// In place, all rows: from a page's order to a host's, and back.
void ToHostOrder(minihost::Image& image);
void ToPageOrder(minihost::Image& image);

/// The same picture in another depth, by the tool's rule for samples.
minihost::Image InDepth(const minihost::Image& image, minihost::Depth depth);

}  // namespace web
