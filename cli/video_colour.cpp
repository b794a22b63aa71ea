#include "cli/video_colour.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

#include "cli/sample_convert.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace cli {
namespace {

using minihost::Depth;
using minihost::Image;

/// Shares of red and blue in luma; green has the rest.
struct LumaWeights {
  double red;
  double blue;
  double Green() const { return 1 - red - blue; }
};

std::optional<LumaWeights> WeightsOf(AVColorSpace matrix) {
  switch (matrix) {
    case AVCOL_SPC_BT709:
      return LumaWeights{0.2126, 0.0722};
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M:
      return LumaWeights{0.299, 0.114};
    case AVCOL_SPC_BT2020_NCL:
      return LumaWeights{0.2627, 0.0593};
    case AVCOL_SPC_SMPTE240M:
      return LumaWeights{0.212, 0.087};
    case AVCOL_SPC_FCC:
      return LumaWeights{0.30, 0.11};
    default:
      return {};
  }
}

/// Where codes of a depth put black, white and the chroma of grey; chroma is -0.5..0.5.
struct CodeRange {
  CodeRange(AVColorRange range, int bits) {
    const auto step = static_cast<double>(1 << (bits - 8));
    const auto most = static_cast<double>((1 << bits) - 1);
    const bool full = range == AVCOL_RANGE_JPEG;
    black = full ? 0 : 16 * step;
    lumaSpan = full ? most : 219 * step;
    grey = 128 * step;
    chromaSpan = full ? most : 224 * step;
  }
  double black;
  double lumaSpan;
  double grey;
  double chromaSpan;
};

/// In double precision, so that codes of 16 bits round as if divided exactly.
using Row = std::vector<double>;

/// Rows of a frame's components as the numbers that are stored.
class ComponentReader {
 public:
  explicit ComponentReader(const AVFrame& frame)
      : frame_(frame), desc_(*av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format))) {
    std::copy_n(frame.data, planes_.size(), planes_.begin());
    codes_.resize(static_cast<std::size_t>(frame.width));
  }

  const AVPixFmtDescriptor& Desc() const { return desc_; }
  int Bits(int component) const { return desc_.comp[component].depth; }

  void Read(int component, int row, int count, Row& out) {
    const AVComponentDescriptor& place = desc_.comp[component];
    if (IsPlainBytes(place)) {
      const std::uint8_t* bytes = planes_[static_cast<std::size_t>(place.plane)] +
                                  static_cast<std::ptrdiff_t>(row) * frame_.linesize[place.plane] +
                                  place.offset;
      for (int i = 0; i < count; ++i) out[static_cast<std::size_t>(i)] = bytes[i * place.step];
      return;
    }
    // A palette holds blue, green, red and alpha in this order; a frame with one names them as RGB does.
    constexpr std::array kPaletteOrder = {2, 1, 0, 3};
    const bool palette = (desc_.flags & AV_PIX_FMT_FLAG_PAL) != 0;
    const int source = palette ? kPaletteOrder[static_cast<std::size_t>(component)] : component;
    av_read_image_line2(codes_.data(), planes_.data(), frame_.linesize, &desc_, 0, row, source, count,
                        palette ? 1 : 0, sizeof codes_[0]);
    const bool isFloat = (desc_.flags & AV_PIX_FMT_FLAG_FLOAT) != 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
      out[i] = isFloat ? std::bit_cast<float>(codes_[i]) : static_cast<double>(codes_[i]);
    }
  }

 private:
  bool IsPlainBytes(const AVComponentDescriptor& place) const {
    return place.depth == 8 && place.shift == 0 && !(desc_.flags & AV_PIX_FMT_FLAG_PAL);
  }

  const AVFrame& frame_;
  const AVPixFmtDescriptor& desc_;
  std::array<const std::uint8_t*, 4> planes_{};
  std::vector<std::uint32_t> codes_;
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

class RowDecoder {
 public:
  RowDecoder(const AVFrame& frame, const YuvCoding& coding)
      : frame_(frame),
        coding_(coding),
        reader_(frame),
        cb_(static_cast<std::size_t>(frame.width)),
        cr_(cb_) {}

  void Decode(int row, RowColors& colors) {
    const auto format = static_cast<AVPixelFormat>(frame_.format);
    const int components = reader_.Desc().nb_components;
    if (IsYuv(format)) {
      DecodeYuv(row, colors);
    } else if (components < 3) {
      ReadScaled(0, row, colors.red);
      // Stored the other way round: 0 is white.
      if (format == AV_PIX_FMT_MONOWHITE) std::ranges::for_each(colors.red, [](double& v) { v = 1 - v; });
      colors.green = colors.red;
      colors.blue = colors.red;
    } else {
      ReadScaled(0, row, colors.red);
      ReadScaled(1, row, colors.green);
      ReadScaled(2, row, colors.blue);
    }
    if (HasAlpha(format)) ReadScaled(components - 1, row, colors.alpha);
  }

 private:
  /// Full-range codes to 0..1.
  void ReadScaled(int component, int row, Row& out) {
    reader_.Read(component, row, frame_.width, out);
    if (reader_.Desc().flags & AV_PIX_FMT_FLAG_FLOAT) return;
    const auto most = static_cast<double>((1u << reader_.Bits(component)) - 1);
    for (double& value : out) value /= most;
  }

  void DecodeYuv(int row, RowColors& colors) {
    ReadChroma(row >> reader_.Desc().log2_chroma_h);
    reader_.Read(0, row, frame_.width, colors.green);
    const CodeRange codes(coding_.range, reader_.Bits(0));
    const LumaWeights weights = WeightsOf(coding_.matrix).value();
    const double redOfCr = 2 * (1 - weights.red);
    const double blueOfCb = 2 * (1 - weights.blue);
    const double greenOfCr = -redOfCr * weights.red / weights.Green();
    const double greenOfCb = -blueOfCb * weights.blue / weights.Green();
    const int shift = reader_.Desc().log2_chroma_w;
    for (std::size_t x = 0; x < colors.green.size(); ++x) {
      const double luma = (colors.green[x] - codes.black) / codes.lumaSpan;
      const double cb = (cb_[x >> shift] - codes.grey) / codes.chromaSpan;
      const double cr = (cr_[x >> shift] - codes.grey) / codes.chromaSpan;
      colors.red[x] = luma + redOfCr * cr;
      colors.green[x] = luma + greenOfCb * cb + greenOfCr * cr;
      colors.blue[x] = luma + blueOfCb * cb;
    }
  }

  void ReadChroma(int row) {
    if (row == chromaRow_) return;
    chromaRow_ = row;
    const int count = AV_CEIL_RSHIFT(frame_.width, reader_.Desc().log2_chroma_w);
    reader_.Read(1, row, count, cb_);
    reader_.Read(2, row, count, cr_);
  }

  const AVFrame& frame_;
  const YuvCoding& coding_;
  ComponentReader reader_;
  Row cb_;
  Row cr_;
  int chromaRow_ = -1;  // the one in cb_ and cr_
};

void MakeStraight(RowColors& colors) {
  for (std::size_t x = 0; x < colors.alpha.size(); ++x) {
    const double alpha = colors.alpha[x];
    if (!(alpha > 0)) continue;
    colors.red[x] /= alpha;
    colors.green[x] /= alpha;
    colors.blue[x] /= alpha;
  }
}

/// As ConvertSample does it from float.
template <class Way>
typename Way::Sample FromFraction(double value) {
  if constexpr (kIsFloat<Way>) {
    return static_cast<float>(value);
  } else {
    if (!(value > 0)) return 0;
    return static_cast<typename Way::Sample>(std::min(value, 1.0) * Way::kWhite + 0.5);
  }
}

template <class Pixel>
double Fraction(decltype(Pixel::alpha) value) {
  return ConvertSample<ToOne, WayOf<Pixel>>(value);
}

template <class Pixel>
void EncodeBytes(const Image& image, AVFrame& frame) {
  for (int row = 0; row < image.height(); ++row) {
    std::uint8_t* bytes = frame.data[0] + static_cast<std::ptrdiff_t>(row) * frame.linesize[0];
    for (const Pixel& pixel : image.Row<Pixel>(row)) {
      *bytes++ = ConvertSample<To255, WayOf<Pixel>>(pixel.blue);
      *bytes++ = ConvertSample<To255, WayOf<Pixel>>(pixel.green);
      *bytes++ = ConvertSample<To255, WayOf<Pixel>>(pixel.red);
      *bytes++ = ConvertSample<To255, WayOf<Pixel>>(pixel.alpha);
    }
  }
}

template <class Sample>
Sample* PlaneRow(AVFrame& frame, int plane, int row) {
  return reinterpret_cast<Sample*>(frame.data[plane] +
                                   static_cast<std::ptrdiff_t>(row) * frame.linesize[plane]);
}

template <class Pixel>
void EncodePlanarRgb16(const Image& image, AVFrame& frame) {
  const auto write = [&](int plane, auto member) {
    for (int row = 0; row < image.height(); ++row) {
      auto* sample = PlaneRow<std::uint16_t>(frame, plane, row);
      for (const Pixel& pixel : image.Row<Pixel>(row)) {
        *sample++ = ConvertSample<To65535, WayOf<Pixel>>(pixel.*member);
      }
    }
  };
  write(0, &Pixel::green);
  write(1, &Pixel::blue);
  write(2, &Pixel::red);
  if (frame.format == AV_PIX_FMT_GBRAP16) write(3, &Pixel::alpha);
}

/// Keeps what limited range has room for, and numbers: one NaN must not spread over its block.  Only float
/// has such values.
template <class Pixel>
double Tame(double value) {
  if constexpr (!kIsFloat<WayOf<Pixel>>) return value;
  if (std::isnan(value)) return 0;
  return std::clamp(value, -1.0, 2.0);
}

template <class Sample>
Sample ToCode(double code, int bits) {
  const auto most = static_cast<double>((1 << bits) - 1);
  return static_cast<Sample>(std::clamp(code + 0.5, 0.0, most));
}

template <class Pixel, class Sample>
class YuvEncoder {
 public:
  YuvEncoder(const Image& image, AVColorSpace matrix, AVFrame& frame)
      : image_(image),
        frame_(frame),
        desc_(*av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format))),
        bits_(desc_.comp[0].depth),
        codes_(AVCOL_RANGE_MPEG, bits_),
        weights_(WeightsOf(matrix).value()),
        cbOfBlue_(0.5 / (1 - weights_.blue)),
        crOfRed_(0.5 / (1 - weights_.red)),
        chromaWidth_(AV_CEIL_RSHIFT(image.width(), desc_.log2_chroma_w)),
        cb_(static_cast<std::size_t>(chromaWidth_)),
        cr_(cb_) {}

  void Encode() {
    const int block = 1 << desc_.log2_chroma_h;
    for (int row = 0; row < image_.height(); ++row) {
      EncodeRow(row);
      if ((row + 1) % block == 0 || row + 1 == image_.height()) WriteChroma(row >> desc_.log2_chroma_h, row);
    }
  }

 private:
  void EncodeRow(int row) {
    const bool hasAlpha = (desc_.flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    auto* luma = PlaneRow<Sample>(frame_, 0, row);
    auto* alpha = hasAlpha ? PlaneRow<Sample>(frame_, 3, row) : nullptr;
    const auto pixels = image_.Row<Pixel>(row);
    for (std::size_t x = 0; x < pixels.size(); ++x) {
      const double opacity = Tame<Pixel>(Fraction<Pixel>(pixels[x].alpha));
      const double share = hasAlpha ? 1 : opacity;
      const double red = Tame<Pixel>(Fraction<Pixel>(pixels[x].red) * share);
      const double green = Tame<Pixel>(Fraction<Pixel>(pixels[x].green) * share);
      const double blue = Tame<Pixel>(Fraction<Pixel>(pixels[x].blue) * share);
      const double bright = weights_.red * red + weights_.Green() * green + weights_.blue * blue;
      luma[x] = ToCode<Sample>(codes_.black + bright * codes_.lumaSpan, bits_);
      cb_[x >> desc_.log2_chroma_w] += (blue - bright) * cbOfBlue_;
      cr_[x >> desc_.log2_chroma_w] += (red - bright) * crOfRed_;
      if (alpha) alpha[x] = ToCode<Sample>(opacity * static_cast<double>((1 << bits_) - 1), bits_);
    }
  }

  /// The means of the blocks that end with the pixel row `lastRow`; blocks at the edges may be smaller.
  void WriteChroma(int row, int lastRow) {
    const int rows = lastRow - (row << desc_.log2_chroma_h) + 1;
    auto* cb = PlaneRow<Sample>(frame_, 1, row);
    auto* cr = PlaneRow<Sample>(frame_, 2, row);
    for (int x = 0; x < chromaWidth_; ++x) {
      const int left = x << desc_.log2_chroma_w;
      const int columns = std::min(1 << desc_.log2_chroma_w, image_.width() - left);
      const double scale = codes_.chromaSpan / static_cast<double>(rows * columns);
      const auto at = static_cast<std::size_t>(x);
      cb[x] = ToCode<Sample>(codes_.grey + cb_[at] * scale, bits_);
      cr[x] = ToCode<Sample>(codes_.grey + cr_[at] * scale, bits_);
      cb_[at] = 0;
      cr_[at] = 0;
    }
  }

  const Image& image_;
  AVFrame& frame_;
  const AVPixFmtDescriptor& desc_;
  int bits_;
  CodeRange codes_;
  LumaWeights weights_;
  double cbOfBlue_;
  double crOfRed_;
  int chromaWidth_;
  Row cb_;  // sums over the block rows so far
  Row cr_;
};

}  // namespace

bool IsKnown(AVColorSpace matrix) {
  return WeightsOf(matrix).has_value();
}

AVColorSpace MatrixByHeight(int height) {
  return height >= 720 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
}

bool IsYuv(AVPixelFormat format) {
  const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(format);
  return desc && !(desc->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) && desc->nb_components >= 3;
}

bool HasAlpha(AVPixelFormat format) {
  const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(format);
  return desc && (desc->flags & AV_PIX_FMT_FLAG_ALPHA);
}

Depth DepthOf(AVPixelFormat format) {
  const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(format);
  int bits = 0;
  for (int i = 0; i < desc->nb_components; ++i) bits = std::max(bits, desc->comp[i].depth);
  if ((desc->flags & AV_PIX_FMT_FLAG_FLOAT) || bits > 16) return Depth::kFloat;
  return bits > 8 ? Depth::kBits16 : Depth::kBits8;
}

std::optional<std::string> WhyUnreadable(AVPixelFormat format) {
  const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(format);
  if (!desc) return "its pixel format is not known";
  const bool noColors = (desc->flags & (AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BAYER)) != 0 ||
                        format == AV_PIX_FMT_XYZ12LE || format == AV_PIX_FMT_XYZ12BE;
  const bool half = (desc->flags & AV_PIX_FMT_FLAG_FLOAT) && desc->comp[0].depth < 32;
  if (!noColors && !half) return {};
  return std::string("pixels of the format '") + desc->name + "' cannot be read; convert it to RGB or YUV";
}

Image DecodePixels(const AVFrame& frame, const YuvCoding& coding, Depth depth, AlphaForm alpha) {
  Image image(frame.width, frame.height, depth, minihost::Clearing::kNone);
  RowDecoder decoder(frame, coding);
  RowColors colors(frame.width);
  const bool premultiplied =
      alpha == AlphaForm::kPremultiplied && HasAlpha(static_cast<AVPixelFormat>(frame.format));
  minihost::WithPixel(depth, [&]<class Pixel>(Pixel) {
    using Way = WayOf<Pixel>;
    for (int row = 0; row < frame.height; ++row) {
      decoder.Decode(row, colors);
      if (premultiplied) MakeStraight(colors);
      const auto pixels = image.Row<Pixel>(row);
      for (std::size_t x = 0; x < pixels.size(); ++x) {
        pixels[x].alpha = FromFraction<Way>(colors.alpha[x]);
        pixels[x].red = FromFraction<Way>(colors.red[x]);
        pixels[x].green = FromFraction<Way>(colors.green[x]);
        pixels[x].blue = FromFraction<Way>(colors.blue[x]);
      }
    }
  });
  return image;
}

void EncodePixels(const Image& image, AVColorSpace matrix, AVFrame& frame) {
  minihost::WithPixel(image.depth(), [&]<class Pixel>(Pixel) {
    switch (frame.format) {
      case AV_PIX_FMT_BGR0:
      case AV_PIX_FMT_BGRA:
        return EncodeBytes<Pixel>(image, frame);
      case AV_PIX_FMT_GBRP16:
      case AV_PIX_FMT_GBRAP16:
        return EncodePlanarRgb16<Pixel>(image, frame);
      case AV_PIX_FMT_YUV420P:
        return YuvEncoder<Pixel, std::uint8_t>(image, matrix, frame).Encode();
      default:
        return YuvEncoder<Pixel, std::uint16_t>(image, matrix, frame).Encode();
    }
  });
}

}  // namespace cli
