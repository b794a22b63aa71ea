#include "cli/video/pixels_in.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "cli/frames/sample_convert.h"
#include "cli/video/rgb.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace cli {
namespace {

using minihost::Depth;
using minihost::Image;

/// In double precision, so that codes of 16 bits round as if divided exactly.
using Row = std::vector<double>;

/// Rows of a frame's components as fractions of white.
class ComponentReader {
 public:
  /// Without `white` every code up to the largest is used.
  explicit ComponentReader(const AVFrame& frame, std::optional<double> white = {})
      : frame_(frame),
        desc_(*av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format))),
        white_(white),
        codes_(static_cast<std::size_t>(frame.width)) {
    std::copy_n(frame.data, planes_.size(), planes_.begin());
  }

  AVPixelFormat Format() const { return static_cast<AVPixelFormat>(frame_.format); }
  int Count() const { return desc_.nb_components; }

  /// As many as `out` is long.
  void Read(int component, int row, Row& out) {
    const AVComponentDescriptor& place = desc_.comp[component];
    const double white = white_.value_or(static_cast<double>((1u << place.depth) - 1));
    if (place.depth == 8 && place.shift == 0) {
      const std::uint8_t* bytes = planes_[static_cast<std::size_t>(place.plane)] +
                                  static_cast<std::ptrdiff_t>(row) * frame_.linesize[place.plane] +
                                  place.offset;
      for (std::size_t i = 0; i < out.size(); ++i) {
        out[i] = bytes[i * static_cast<std::size_t>(place.step)] / white;
      }
      return;
    }
    av_read_image_line2(codes_.data(), planes_.data(), frame_.linesize, &desc_, 0, row, component,
                        static_cast<int>(out.size()), 0, sizeof codes_[0]);
    const bool isFloat = (desc_.flags & AV_PIX_FMT_FLAG_FLOAT) != 0;
    for (std::size_t i = 0; i < out.size(); ++i) {
      out[i] = isFloat ? std::bit_cast<float>(codes_[i]) : codes_[i] / white;
    }
  }

 private:
  const AVFrame& frame_;
  const AVPixFmtDescriptor& desc_;
  std::optional<double> white_;
  std::vector<std::uint32_t> codes_;
  std::array<const std::uint8_t*, 4> planes_{};
};

/// One row of a picture, white and opaque at 1.
struct RowColors {
  explicit RowColors(int width)
      : red(static_cast<std::size_t>(width)), green(red), blue(red), alpha(red.size(), 1.0) {}
  Row red;
  Row green;
  Row blue;
  Row alpha;
};

/// From a frame in RGB or grey.
void ReadColors(ComponentReader& reader, int row, RowColors& colors) {
  reader.Read(0, row, colors.red);
  if (reader.Count() < 3) {
    // Stored the other way round: 0 is white.
    if (reader.Format() == AV_PIX_FMT_MONOWHITE) {
      std::ranges::for_each(colors.red, [](double& value) { value = 1 - value; });
    }
    colors.green = colors.red;
    colors.blue = colors.red;
    return;
  }
  reader.Read(1, row, colors.green);
  reader.Read(2, row, colors.blue);
}

void MakeStraight(RowColors& colors) {
  for (std::size_t x = 0; x < colors.alpha.size(); ++x) {
    const double alpha = colors.alpha[x];
    if (!(alpha > 0)) {
      continue;
    }
    colors.red[x] /= alpha;
    colors.green[x] /= alpha;
    colors.blue[x] /= alpha;
  }
}

template <class Pixel>
void Store(const RowColors& colors, std::span<Pixel> pixels) {
  using Way = WayOf<Pixel>;
  for (std::size_t x = 0; x < pixels.size(); ++x) {
    pixels[x].alpha = FromFraction<Way>(colors.alpha[x]);
    pixels[x].red = FromFraction<Way>(colors.red[x]);
    pixels[x].green = FromFraction<Way>(colors.green[x]);
    pixels[x].blue = FromFraction<Way>(colors.blue[x]);
  }
}

}  // namespace

Image DecodePixels(const AVFrame& frame, const YuvCoding& coding, Depth depth, AlphaForm alpha) {
  const auto format = static_cast<AVPixelFormat>(frame.format);
  const bool isPalette = format == AV_PIX_FMT_PAL8;
  std::optional<RgbFrame> rgb;
  if (IsYuv(format)) {
    rgb = RgbOfYuv(frame, coding, depth == Depth::kBits8 ? RgbBits::k8 : RgbBits::k16);
  }
  if (isPalette) {
    rgb = RgbOfPalette(frame);
  }
  ComponentReader colorReader = rgb ? ComponentReader(*rgb->frame, rgb->white) : ComponentReader(frame);
  ComponentReader alphaReader(isPalette ? *rgb->frame : frame);
  Image image(frame.width, frame.height, depth, minihost::Clearing::kNone);
  RowColors colors(frame.width);
  minihost::WithPixel(depth, [&]<class Pixel>(Pixel) {
    for (int row = 0; row < frame.height; ++row) {
      ReadColors(colorReader, row, colors);
      if (HasAlpha(format)) {
        alphaReader.Read(alphaReader.Count() - 1, row, colors.alpha);
        if (alpha == AlphaForm::kPremultiplied) {
          MakeStraight(colors);
        }
      }
      Store(colors, image.Row<Pixel>(row));
    }
  });
  return image;
}

}  // namespace cli
