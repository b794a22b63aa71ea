#include "cli/video/module/rgb.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <stdexcept>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace cli {
namespace {

struct FreeSws {
  void operator()(SwsContext* context) const { sws_freeContext(context); }
};

/// The filters differ only where chroma is shared by pixels.
enum class ChromaFilter : int { kNearest = SWS_POINT, kMean = SWS_AREA };

/// What a context of the library is made for.
struct Conversion {
  int fromWidth;
  int fromHeight;
  AVPixelFormat fromFormat;
  int toWidth;
  int toHeight;
  AVPixelFormat toFormat;
  ChromaFilter filter;
  AVColorSpace matrix;  // of luma and chroma, on whichever side they are
  AVColorRange range;
  bool operator==(const Conversion&) const = default;
};

/// Null when the library cannot convert so.
std::unique_ptr<SwsContext, FreeSws> MakeContext(const Conversion& wanted) {
  constexpr int kExact = SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP | SWS_BITEXACT;
  std::unique_ptr<SwsContext, FreeSws> context(
      sws_getContext(wanted.fromWidth, wanted.fromHeight, wanted.fromFormat, wanted.toWidth, wanted.toHeight,
                     wanted.toFormat, static_cast<int>(wanted.filter) | kExact, nullptr, nullptr, nullptr));
  // RGB is always full.
  const auto range = [&](AVPixelFormat format) {
    return IsYuv(format) && wanted.range != AVCOL_RANGE_JPEG ? 0 : 1;
  };
  constexpr int kOne = 1 << 16;  // contrast and saturation as they are
  const int* weights = sws_getCoefficients(wanted.matrix);
  if (context && sws_setColorspaceDetails(context.get(), weights, range(wanted.fromFormat), weights,
                                          range(wanted.toFormat), 0, kOne, kOne) < 0) {
    context.reset();
  }
  return context;
}

/// Contexts are costly to make, and hold no picture between two.  A thread needs two for the way in and two
/// for the way out, since the last strip of a frame may be shorter; on loan until the thread's next call.
SwsContext* ContextFor(const Conversion& wanted) {
  struct Kept {
    Conversion conversion;
    std::unique_ptr<SwsContext, FreeSws> context;
  };
  thread_local std::array<std::optional<Kept>, 4> kept;
  thread_local std::size_t oldest = 0;
  for (const std::optional<Kept>& one : kept) {
    if (one && one->conversion == wanted) {
      return one->context.get();
    }
  }
  std::optional<Kept>& place = kept[oldest];
  oldest = (oldest + 1) % kept.size();
  place.emplace(Kept{wanted, MakeContext(wanted)});
  return place->context.get();
}

void Convert(const AVFrame& from, const YuvCoding& coding, ChromaFilter filter, AVFrame& to) {
  const auto fromFormat = static_cast<AVPixelFormat>(from.format);
  const auto toFormat = static_cast<AVPixelFormat>(to.format);
  SwsContext* context = ContextFor({from.width, from.height, fromFormat, to.width, to.height, toFormat,
                                    filter, coding.matrix, coding.range});
  if (!context ||
      sws_scale(context, from.data, from.linesize, 0, from.height, to.data, to.linesize) != to.height) {
    throw std::runtime_error(fmt::format("pixels cannot be converted from {} to {}",
                                         av_get_pix_fmt_name(fromFormat), av_get_pix_fmt_name(toFormat)));
  }
}

int RoundUp(int size, int log2) {
  return AV_CEIL_RSHIFT(size, log2) << log2;
}

/// A copy in whole blocks of chroma.  What is added to luma is undefined.
AvFrame PadToBlocks(const AVFrame& frame, int width, int height) {
  const auto format = static_cast<AVPixelFormat>(frame.format);
  AvFrame padded = AllocateFrame(format, width, height);
  std::array<const std::uint8_t*, 4> planes{};
  std::copy_n(frame.data, planes.size(), planes.begin());
  av_image_copy(padded->data, padded->linesize, planes.data(), frame.linesize, format, frame.width,
                frame.height);
  return padded;
}

}  // namespace

RgbFrame RgbOfYuv(const AVFrame& yuv, const YuvCoding& coding, RgbBits bits) {
  const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(yuv.format));
  const int width = RoundUp(yuv.width, desc.log2_chroma_w);
  const int height = RoundUp(yuv.height, desc.log2_chroma_h);
  // Else the library stretches the chroma over the size, and the block that a pixel belongs to shifts.
  const bool whole = width == yuv.width && height == yuv.height;
  const AvFrame padded = whole ? nullptr : PadToBlocks(yuv, width, height);
  const bool wide = bits == RgbBits::k16;
  RgbFrame rgb{AllocateFrame(wide ? AV_PIX_FMT_GBRP16 : AV_PIX_FMT_GBRP, width, height), 255};
  if (wide && coding.range == AVCOL_RANGE_JPEG) {
    // The codes are shifted up to 16 bits, with zeros from below.
    const int depth = desc.comp[0].depth;
    rgb.white = ((1 << depth) - 1) << (16 - depth);
  } else if (wide) {
    rgb.white = To65280::kWhite;
  }
  Convert(whole ? yuv : *padded, coding, ChromaFilter::kNearest, *rgb.frame);
  return rgb;
}

RgbFrame RgbOfPalette(const AVFrame& indices) {
  RgbFrame rgb{AllocateFrame(AV_PIX_FMT_BGRA, indices.width, indices.height), 255};
  Convert(indices, {}, ChromaFilter::kNearest, *rgb.frame);
  return rgb;
}

void YuvOfRgb(const AVFrame& rgb, AVColorSpace matrix, AVFrame& yuv) {
  Convert(rgb, {matrix, AVCOL_RANGE_MPEG}, ChromaFilter::kMean, yuv);
}

}  // namespace cli
