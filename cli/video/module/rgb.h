// Video frames from luma and chroma or a palette to RGB, and back to luma and chroma, by libswscale.
// What that cannot convert, std::runtime_error tells.
//
// A chroma sample stands for the block of pixels that shares it: on the way in each takes it as it is, on the
// way out it is their mean.  The one undoes the other, so that a video in which nothing is drawn keeps its
// codes, but for those of colours outside of RGB.  With filters that blend neighbouring chroma, hard edges
// came back up to 28 of 255 codes off.  The library is told to round rather than to be quick, which also
// makes its numbers the same on every processor.
#pragma once

#include <cstdint>

#include "cli/frames/sample_convert.h"
#include "cli/video/module/color.h"
#include "cli/video/module/libav.h"

namespace cli {

/// White in GBRP16 next to limited range, where the library counts 256 for each of 255 steps.  Were it taken
/// for 65535, white would become 944 of 1023 instead of 940.
using To65280 = CountTo<std::uint16_t, 65280>;

struct RgbFrame {
  AvFrame frame;     // of the size of the source or larger: whole blocks of chroma
  double white = 0;  // the code of white and of opaque
};

enum class RgbBits { k8, k16 };

/// Frames are converted strip by strip, so that what is between stays in the cache; each stands for itself,
/// as blocks of chroma do.  How many rows the strip has that begins at `row`: the last takes what is too low
/// to be averaged alone.
constexpr int StripRows(int row, int height) {
  constexpr int kUsual = 32;
  constexpr int kLowest = 8;
  return height - row < kUsual + kLowest ? height - row : kUsual;
}

/// Luma and chroma of any depth in GBRP or GBRP16, without alpha.  Colours outside of RGB are clamped.
RgbFrame RgbOfYuv(const AVFrame& yuv, const YuvCoding& coding, RgbBits bits);

/// PAL8 in BGRA.
RgbFrame RgbOfPalette(const AVFrame& indices);

/// Fills the luma and chroma of `yuv`, of limited range, from a frame of its size: GBRP, or GBRP16 with white
/// at To65280.  In 4:2:0 both sides are even; with a side of 2, chroma is not the mean but one pixel's.
void YuvOfRgb(const AVFrame& rgb, AVColorSpace matrix, AVFrame& yuv);

}  // namespace cli
