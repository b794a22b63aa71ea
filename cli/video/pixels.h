// Pixels of video frames to and from pictures, with or without alpha, in any depth.
#pragma once

#include "cli/video/color.h"
#include "cli/video/libav.h"
#include "minihost/picture/image.h"

namespace cli {

/// The picture of a frame in a readable format, straight alpha, opaque when the frame has none.  Grey counts
/// in full range.  RGB of floats is kept as it is in float; all else is clamped to black and white.
/// Premultiplied colour is divided by alpha except where that is 0.
minihost::Image DecodePixels(const AVFrame& frame, const YuvCoding& coding, minihost::Depth depth,
                             AlphaForm alpha);

/// Fills `frame`, whose format is BGR0 or BGRA (for 8-bit images), GBRP16, GBRAP16, YUV420P, YUV444P10 or
/// YUVA444P10, its buffers allocated in the image's size.  Luma and chroma are of limited range in `matrix`.
/// Without alpha in the format, YUV takes the picture over black; RGB takes its colour.
void EncodePixels(const minihost::Image& image, AVColorSpace matrix, AVFrame& frame);

}  // namespace cli
