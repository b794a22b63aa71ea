// What the codes of a video mean: matrix, range, alpha, and which pixel formats can be read.
#pragma once

#include <optional>
#include <string>

#include "cli/scene/settings.h"
#include "cli/video/module/libav.h"
#include "cli/video/traits.h"
#include "minihost/picture/image.h"

namespace cli {

/// How codes of luma and chroma stand for red, green and blue.
struct YuvCoding {
  AVColorSpace matrix = AVCOL_SPC_BT709;  // one that IsKnown
  AVColorRange range = AVCOL_RANGE_MPEG;  // MPEG is limited: 16..235 of 255; JPEG is full
};

/// The numbers of the tags are the libraries' too.
inline AVColorSpace MatrixOf(const ColorTags& tags) {
  return static_cast<AVColorSpace>(tags.matrix);
}

/// Whether the matrix can be read and written: BT.601, BT.709, BT.2020, SMPTE 240M and FCC.
bool IsKnown(AVColorSpace matrix);

/// What a video without a tag is taken for: BT.709 from 720 lines on, else BT.601.
AVColorSpace MatrixByHeight(int height);

/// The tags of a file with these pixels: fills in what the source does not say.  Standard-definition video
/// comes with two sets of primaries; only the tag of the matrix tells which.
ColorTags CompleteTags(ColorTags tags, AVPixelFormat format, int height);

/// Whether pixels of this format are luma and chroma.
bool IsYuv(AVPixelFormat format);

/// Whether pixels of this format have an alpha channel.
bool HasAlpha(AVPixelFormat format);

/// The most bits that a sample of the format has.
int BitsOf(AVPixelFormat format);

/// The least depth in which nothing of the format is lost: 8 bits, 16 bits up to 15 (their white is 32768),
/// else float.
minihost::Depth DepthOf(AVPixelFormat format);

/// Empty when DecodePixels can read the format, else what stands against it.
std::optional<std::string> WhyUnreadable(AVPixelFormat format);

}  // namespace cli
