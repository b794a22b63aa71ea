#include "cli/video/module/pixels_in.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <type_traits>
#include <vector>

#include "cli/video/module/fast_convert.h"

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

/// Of the picture that a frame or a strip of it becomes.
struct Rows {
  Image& image;
  int first;
  int count;

  template <class Pixel>
  std::span<Pixel> Row(int row) const {
    return image.Row<Pixel>(first + row);
  }
};

/// Where the codes of one component lie when they are whole bytes or pairs of bytes, and nothing else is in
/// them.
struct PlainCodes {
  const std::uint8_t* start = nullptr;
  std::ptrdiff_t rowStep = 0;
  std::ptrdiff_t step = 0;
  int depth = 0;

  bool IsWide() const { return depth > 8; }
};

/// Empty when they lie otherwise.
std::optional<PlainCodes> FindPlainCodes(const AVFrame& frame, int component) {
  const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
  const AVComponentDescriptor& place = desc.comp[component];
  constexpr std::uint64_t kOther =
      AV_PIX_FMT_FLAG_FLOAT | AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_BE | AV_PIX_FMT_FLAG_HWACCEL;
  constexpr bool kIsLittle = std::endian::native == std::endian::little;
  if ((desc.flags & kOther) || place.shift != 0 || place.depth < 8 || place.depth > 16 ||
      (place.depth > 8 && !kIsLittle)) {
    return {};
  }
  return PlainCodes{frame.data[place.plane] + place.offset, frame.linesize[place.plane], place.step,
                    place.depth};
}

/// FromFraction for every code.
template <class Way>
class CodeTable {
 public:
  using Sample = typename Way::Sample;

  const Sample* For(int depth, double white) {
    if (depth != depth_ || white != white_) {
      samples_.resize(std::size_t{1} << depth);
      for (std::size_t code = 0; code < samples_.size(); ++code) {
        samples_[code] = FromFraction<Way>(static_cast<double>(code) / white);
      }
      depth_ = depth;
      white_ = white;
    }
    return samples_.data();
  }

 private:
  int depth_ = 0;
  double white_ = 0;
  std::vector<Sample> samples_;
};

template <class Code>
Code CodeAt(const std::uint8_t* place) {
  Code code;
  std::memcpy(&code, place, sizeof code);
  return code;
}

/// The pixels of one row by its tables; the codes of a component are `Code`s.
template <class Code, class Pixel, class Sample>
void LookUp(std::array<const std::uint8_t*, 3> rgb, std::ptrdiff_t step, unsigned mask, const Sample* table,
            std::span<Pixel> pixels) {
  const auto [red, green, blue] = rgb;
  const auto width = static_cast<std::ptrdiff_t>(pixels.size());
  const Sample opaque = FromFraction<WayOf<Pixel>>(1.0);
  for (std::ptrdiff_t x = 0; x < width; ++x) {
    pixels[static_cast<std::size_t>(x)] = {opaque, table[CodeAt<Code>(red + x * step) & mask],
                                           table[CodeAt<Code>(green + x * step) & mask],
                                           table[CodeAt<Code>(blue + x * step) & mask]};
  }
}

/// Planes of 16 bits whose white is at To65280.
void Weave16(std::array<const std::uint8_t*, 3> rgb, std::span<PF_Pixel16> pixels) {
  const auto* red = reinterpret_cast<const std::uint16_t*>(rgb[0]);
  const auto* green = reinterpret_cast<const std::uint16_t*>(rgb[1]);
  const auto* blue = reinterpret_cast<const std::uint16_t*>(rgb[2]);
  for (std::size_t x = 0; x < pixels.size(); ++x) {
    pixels[x] = {To32768::kWhite, FastConvert<To32768, To65280>(red[x]),
                 FastConvert<To32768, To65280>(green[x]), FastConvert<To32768, To65280>(blue[x])};
  }
}

/// Bytes in planes of their own whose codes are the samples.
void Weave(const std::uint8_t* red, const std::uint8_t* green, const std::uint8_t* blue,
           std::span<PF_Pixel> pixels) {
  for (std::size_t x = 0; x < pixels.size(); ++x) {
    pixels[x] = {255, red[x], green[x], blue[x]};
  }
}

/// Opaque pixels of the two ways in which RgbOfYuv counts, without a table.  False for others.
template <class Pixel>
bool StoreQuickly(std::array<const std::uint8_t*, 3> rgb, const PlainCodes& codes, double white,
                  std::span<Pixel> pixels) {
  if constexpr (std::is_same_v<Pixel, PF_Pixel>) {
    if (codes.depth == 8 && codes.step == 1 && white == To255::kWhite) {
      Weave(rgb[0], rgb[1], rgb[2], pixels);
      return true;
    }
  }
  if constexpr (std::is_same_v<Pixel, PF_Pixel16>) {
    if (codes.depth == 16 && codes.step == 2 && white == To65280::kWhite) {
      Weave16(rgb, pixels);
      return true;
    }
  }
  return false;
}

/// Straight colour whose codes lie plainly, by tables.  Gives the samples that going by fractions gives, and
/// is several times as fast.  False when the frame is not so.
template <class Pixel>
bool StoreByTables(const AVFrame& colors, std::optional<double> white, const AVFrame* alphas, Rows to) {
  using Way = WayOf<Pixel>;
  const int count = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(colors.format))->nb_components;
  const bool isGray = count < 3;
  const auto red = FindPlainCodes(colors, 0);
  const auto green = isGray ? red : FindPlainCodes(colors, 1);
  const auto blue = isGray ? red : FindPlainCodes(colors, 2);
  if (!red || !green || !blue || red->depth != green->depth || red->depth != blue->depth ||
      red->step != green->step || red->step != blue->step) {
    return false;
  }
  std::optional<PlainCodes> alpha;
  if (alphas) {
    const auto format = static_cast<AVPixelFormat>(alphas->format);
    alpha = FindPlainCodes(*alphas, av_pix_fmt_desc_get(format)->nb_components - 1);
    if (!alpha) {
      return false;
    }
  }
  const auto whiteOf = [](int depth) { return static_cast<double>((1u << depth) - 1); };
  const auto maskOf = [](int depth) { return (1u << depth) - 1; };
  thread_local CodeTable<Way> colorTable;
  thread_local CodeTable<Way> alphaTable;
  const double colorWhite = white.value_or(whiteOf(red->depth));
  const auto* table = colorTable.For(red->depth, colorWhite);
  for (int row = 0; row < to.count; ++row) {
    const auto pixels = to.Row<Pixel>(row);
    const auto rowOf = [row](const PlainCodes& codes) { return codes.start + row * codes.rowStep; };
    const std::array rows{rowOf(*red), rowOf(*green), rowOf(*blue)};
    if (!StoreQuickly(rows, *red, colorWhite, pixels)) {
      if (red->IsWide()) {
        LookUp<std::uint16_t>(rows, red->step, maskOf(red->depth), table, pixels);
      } else {
        LookUp<std::uint8_t>(rows, red->step, maskOf(red->depth), table, pixels);
      }
    }
    if (alpha) {
      const auto* samples = alphaTable.For(alpha->depth, whiteOf(alpha->depth));
      const std::uint8_t* codes = rowOf(*alpha);
      for (Pixel& pixel : pixels) {
        const unsigned code = alpha->IsWide() ? CodeAt<std::uint16_t>(codes) : *codes;
        pixel.alpha = samples[code & maskOf(alpha->depth)];
        codes += alpha->step;
      }
    }
  }
  return true;
}

void Decode(const AVFrame& frame, const YuvCoding& coding, AlphaForm alpha, Rows to) {
  const auto format = static_cast<AVPixelFormat>(frame.format);
  const Depth depth = to.image.PixelDepth();
  const bool isPalette = format == AV_PIX_FMT_PAL8;
  std::optional<RgbFrame> rgb;
  if (IsYuv(format)) {
    rgb = RgbOfYuv(frame, coding, depth == Depth::kBits8 ? RgbBits::k8 : RgbBits::k16);
  }
  if (isPalette) {
    rgb = RgbOfPalette(frame);
  }
  const bool isStraight = alpha == AlphaForm::kStraight || !HasAlpha(format);
  const bool isStored =
      isStraight && minihost::WithPixel(depth, [&]<class Pixel>(Pixel) {
        const AVFrame& alphas = isPalette ? *rgb->frame : frame;
        return StoreByTables<Pixel>(rgb ? *rgb->frame : frame, rgb ? std::optional(rgb->white) : std::nullopt,
                                    HasAlpha(format) ? &alphas : nullptr, to);
      });
  if (isStored) {
    return;
  }
  ComponentReader colorReader = rgb ? ComponentReader(*rgb->frame, rgb->white) : ComponentReader(frame);
  ComponentReader alphaReader(isPalette ? *rgb->frame : frame);
  RowColors colors(frame.width);
  minihost::WithPixel(depth, [&]<class Pixel>(Pixel) {
    for (int row = 0; row < to.count; ++row) {
      ReadColors(colorReader, row, colors);
      if (HasAlpha(format)) {
        alphaReader.Read(alphaReader.Count() - 1, row, colors.alpha);
        if (alpha == AlphaForm::kPremultiplied) {
          MakeStraight(colors);
        }
      }
      Store(colors, to.Row<Pixel>(row));
    }
  });
}

}  // namespace

Image DecodePixels(const AVFrame& frame, const YuvCoding& coding, Depth depth, AlphaForm alpha) {
  Image image(frame.width, frame.height, depth, minihost::Clearing::kNone);
  if (!IsYuv(static_cast<AVPixelFormat>(frame.format))) {
    Decode(frame, coding, alpha, {image, 0, frame.height});
    return image;
  }
  for (int row = 0, count = 0; row < frame.height; row += count) {
    count = StripRows(row, frame.height);
    Decode(*RowsOf(frame, row, count), coding, alpha, {image, row, count});
  }
  return image;
}

}  // namespace cli
