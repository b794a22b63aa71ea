// Pictures to pixels of video frames, in the formats that are written.
#pragma once

#include "cli/video/module/libav.h"
#include "minihost/picture/image.h"

namespace cli {

/// Fills `frame`, whose format is BGR0 or BGRA (for 8-bit images), GBRP16, GBRAP16, YUV420P, YUV420P10,
/// YUV444P10 or YUVA444P10, its buffers allocated in the image's size.  Luma and chroma are of limited range
/// in `matrix`, one that IsKnown.  Without alpha in the format, YUV takes the picture over black; RGB takes
/// its colour. Throws std::invalid_argument for another format.
void EncodePixels(const minihost::Image& image, AVColorSpace matrix, AVFrame& frame);

}  // namespace cli
