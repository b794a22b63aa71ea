#include "cli/video/module/pixels_out.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <type_traits>

#include "cli/video/module/fast_convert.h"

namespace cli {
namespace {

using minihost::Image;

using To1023 = CountTo<std::uint16_t, 1023>;

/// So many rows of a picture from `first` on.
struct Rows {
  const Image& image;
  int first;
  int count;

  template <class Pixel>
  std::span<const Pixel> Row(int row) const {
    return image.Row<Pixel>(first + row);
  }
};

template <class Pixel>
void WriteBytes(Rows from, AVFrame& frame) {
  for (int row = 0; row < from.count; ++row) {
    std::uint8_t* bytes = frame.data[0] + static_cast<std::ptrdiff_t>(row) * frame.linesize[0];
    for (const Pixel& pixel : from.Row<Pixel>(row)) {
      *bytes++ = FastConvert<To255, WayOf<Pixel>>(pixel.blue);
      *bytes++ = FastConvert<To255, WayOf<Pixel>>(pixel.green);
      *bytes++ = FastConvert<To255, WayOf<Pixel>>(pixel.red);
      *bytes++ = FastConvert<To255, WayOf<Pixel>>(pixel.alpha);
    }
  }
}

template <class Way>
typename Way::Sample* PlaneRow(AVFrame& frame, int plane, int row) {
  return reinterpret_cast<typename Way::Sample*>(frame.data[plane] +
                                                 static_cast<std::ptrdiff_t>(row) * frame.linesize[plane]);
}

template <class Way, class Pixel>
void WriteAlpha(Rows from, AVFrame& frame) {
  for (int row = 0; row < from.count; ++row) {
    auto* __restrict sample = PlaneRow<Way>(frame, 3, row);
    const auto pixels = from.Row<Pixel>(row);
    for (std::size_t x = 0; x < pixels.size(); ++x) {
      sample[x] = FastConvert<Way, WayOf<Pixel>>(pixels[x].alpha);
    }
  }
}

/// One row of GBRP of any depth.
template <class Way, class Pixel>
void WriteColorRow(std::span<const Pixel> pixels, AVFrame& frame, int row) {
  using From = WayOf<Pixel>;
  auto* __restrict green = PlaneRow<Way>(frame, 0, row);
  auto* __restrict blue = PlaneRow<Way>(frame, 1, row);
  auto* __restrict red = PlaneRow<Way>(frame, 2, row);
  if constexpr (std::is_same_v<Pixel, PF_Pixel16> && sizeof *green == sizeof(std::uint16_t)) {
    SplitColors(pixels.data(), pixels.size(), red, green, blue);
    for (auto* samples : {red, green, blue}) {
      for (std::size_t x = 0; x < pixels.size(); ++x) {
        samples[x] = FastConvert<Way, From>(samples[x]);
      }
    }
    return;
  }
  for (std::size_t x = 0; x < pixels.size(); ++x) {
    green[x] = FastConvert<Way, From>(pixels[x].green);
    blue[x] = FastConvert<Way, From>(pixels[x].blue);
    red[x] = FastConvert<Way, From>(pixels[x].red);
  }
}

template <class Way, class Pixel>
void WriteColors(Rows from, AVFrame& frame) {
  for (int row = 0; row < from.count; ++row) {
    WriteColorRow<Way>(from.Row<Pixel>(row), frame, row);
  }
}

template <class Pixel>
bool IsOpaque(std::span<const Pixel> pixels) {
  using Sample = typename WayOf<Pixel>::Sample;
  const auto opaque = FromFraction<WayOf<Pixel>>(1.0);
  if constexpr (std::is_same_v<Sample, float>) {
    return std::ranges::all_of(pixels, [&](const Pixel& pixel) { return pixel.alpha == opaque; });
  } else {
    Sample differing = 0;
    for (const Pixel& pixel : pixels) {
      differing = static_cast<Sample>(differing | (pixel.alpha ^ opaque));
    }
    return differing == 0;
  }
}

/// The same over black.
template <class Way, class Pixel>
void WriteColorsOverBlack(Rows from, AVFrame& frame) {
  for (int row = 0; row < from.count; ++row) {
    const auto pixels = from.Row<Pixel>(row);
    // Times one is what it was; most rows are so.
    if (IsOpaque(pixels)) {
      WriteColorRow<Way>(pixels, frame, row);
      continue;
    }
    int plane = 0;
    for (const auto channel : {&Pixel::green, &Pixel::blue, &Pixel::red}) {
      auto* sample = PlaneRow<Way>(frame, plane++, row);
      for (const Pixel& pixel : pixels) {
        const float alpha = ConvertSample<ToOne, WayOf<Pixel>>(pixel.alpha);
        *sample++ = ConvertSample<Way, ToOne>(ConvertSample<ToOne, WayOf<Pixel>>(pixel.*channel) * alpha);
      }
    }
  }
}

}  // namespace

void EncodePixels(const Image& image, AVColorSpace matrix, AVFrame& frame) {
  const Rows all{image, 0, image.Height()};
  const auto toYuv = [&](AVPixelFormat format, auto write) {
    for (int row = 0, count = 0; row < image.Height(); row += count) {
      count = StripRows(row, image.Height());
      const AvFrame rgb = AllocateFrame(format, frame.width, count);
      write(Rows{image, row, count}, *rgb);
      YuvOfRgb(*rgb, matrix, *RowsOf(frame, row, count));
    }
  };
  minihost::WithPixel(image.PixelDepth(), [&]<class Pixel>(Pixel) {
    switch (frame.format) {
      case AV_PIX_FMT_BGR0:
      case AV_PIX_FMT_BGRA:
        return WriteBytes<Pixel>(all, frame);
      case AV_PIX_FMT_GBRAP16:
        WriteAlpha<To65535, Pixel>(all, frame);
        [[fallthrough]];
      case AV_PIX_FMT_GBRP16:
        return WriteColors<To65535, Pixel>(all, frame);
      case AV_PIX_FMT_YUV420P:
        return toYuv(AV_PIX_FMT_GBRP, WriteColorsOverBlack<To255, Pixel>);
      case AV_PIX_FMT_YUV420P10:
      case AV_PIX_FMT_YUV444P10:
        return toYuv(AV_PIX_FMT_GBRP16, WriteColorsOverBlack<To65280, Pixel>);
      case AV_PIX_FMT_YUVA444P10:
        toYuv(AV_PIX_FMT_GBRP16, WriteColors<To65280, Pixel>);
        return WriteAlpha<To1023, Pixel>(all, frame);
      default:
        throw std::invalid_argument("a pixel format that is not written");
    }
  });
}

}  // namespace cli
