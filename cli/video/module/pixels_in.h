// Pixels of video frames to pictures, with or without alpha, in any depth.
#pragma once

#include "cli/video/module/color.h"
#include "cli/video/module/libav.h"
#include "minihost/picture/image.h"

namespace cli {

/// The picture of a frame whose format WhyUnreadable has nothing against, of the frame's size and of `depth`,
/// straight alpha, opaque when the frame has none.  Grey counts in full range; `coding` is for luma and
/// chroma alone.  RGB of floats is kept as it is in float; all else is clamped to black and white.
/// Premultiplied colour is divided by alpha except where that is 0.
minihost::Image DecodePixels(const AVFrame& frame, const YuvCoding& coding, minihost::Depth depth,
                             AlphaForm alpha);

}  // namespace cli
