// Pixels of video frames to and from pictures: luma and chroma, ranges, alpha, any depth.
//
// The arithmetic is the plain one of the standards in double precision with one rounding at the end, so it
// does not depend on the processor and needs no state.  A chroma sample stands for the block of pixels that
// shares it: on the way in each takes it as it is, on the way out it is their mean.  The one undoes the
// other, so that a video in which nothing is drawn keeps its codes (but for those of colours outside of RGB).
#pragma once

#include <optional>
#include <string>

#include "cli/libav.h"
#include "minihost/image.h"

namespace cli {

/// Whether the colour of a file with alpha has been multiplied by it.
enum class AlphaForm { kStraight, kPremultiplied };

/// What a video says about the meaning of its colour.
struct ColorTags {
  AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
  AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
  AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
};

/// How codes of luma and chroma stand for red, green and blue.
struct YuvCoding {
  AVColorSpace matrix = AVCOL_SPC_BT709;  // one that IsKnown
  AVColorRange range = AVCOL_RANGE_MPEG;  // MPEG is limited: 16..235 of 255; JPEG is full
};

/// Whether there is arithmetic for the matrix: BT.601, BT.709, BT.2020, SMPTE 240M and FCC.
bool IsKnown(AVColorSpace matrix);

/// What a video without a tag is taken for: BT.709 from 720 lines on, else BT.601.
AVColorSpace MatrixByHeight(int height);

/// Whether pixels of this format are luma and chroma.
bool IsYuv(AVPixelFormat format);
bool HasAlpha(AVPixelFormat format);

/// The depth that loses nothing of the format: up to 8 bits 8, up to 16 bits 16, else float.
minihost::Depth DepthOf(AVPixelFormat format);

/// Empty when DecodePixels can read the format, else what stands against it.
std::optional<std::string> WhyUnreadable(AVPixelFormat format);

/// The picture of a frame in a readable format, straight alpha, opaque when the frame has none.  Grey counts
/// in full range.  In float, codes beyond white and below black are kept; else they are clamped.
/// Premultiplied colour is divided by alpha except where that is 0.
minihost::Image DecodePixels(const AVFrame& frame, const YuvCoding& coding, minihost::Depth depth,
                             AlphaForm alpha);

/// Fills `frame`, whose format is BGR0 or BGRA (for 8-bit images), GBRP16, GBRAP16, YUV420P, YUV444P10 or
/// YUVA444P10, its buffers allocated in the image's size.  Luma and chroma are of limited range in `matrix`.
/// Without alpha in the format, YUV takes the picture over black; RGB takes its colour.
void EncodePixels(const minihost::Image& image, AVColorSpace matrix, AVFrame& frame);

}  // namespace cli
