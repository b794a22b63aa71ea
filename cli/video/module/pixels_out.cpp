#include "cli/video/module/pixels_out.h"

#include <cstdint>
#include <span>
#include <stdexcept>
#include <type_traits>

#include "cli/frames/sample_convert.h"
#include "cli/video/module/rgb.h"

namespace cli {
namespace {

using minihost::Image;

using To1023 = CountTo<std::uint16_t, 1023>;

/// ConvertSample, without the arithmetic where nothing changes and in 32 bits where they suffice, so that the
/// compiler can work on many at once.
template <class To, class From>
constexpr typename To::Sample Quickly(typename From::Sample value) noexcept {
  if constexpr (std::is_same_v<To, From> && std::is_same_v<To, To255>) {
    return value;
  } else if constexpr (!kIsFloat<To> && !kIsFloat<From>) {
    constexpr std::uint64_t kMost = std::uint64_t{From::kWhite} * To::kWhite * 2 + From::kWhite;
    if constexpr (kMost <= UINT32_MAX) {
      const std::uint32_t within = value < From::kWhite ? value : From::kWhite;
      return static_cast<typename To::Sample>((within * (To::kWhite * 2) + From::kWhite) /
                                              (From::kWhite * 2));
    }
  }
  return ConvertSample<To, From>(value);
}

template <class Pixel>
void WriteBytes(const Image& image, AVFrame& frame) {
  for (int row = 0; row < image.Height(); ++row) {
    std::uint8_t* bytes = frame.data[0] + static_cast<std::ptrdiff_t>(row) * frame.linesize[0];
    for (const Pixel& pixel : image.Row<Pixel>(row)) {
      *bytes++ = Quickly<To255, WayOf<Pixel>>(pixel.blue);
      *bytes++ = Quickly<To255, WayOf<Pixel>>(pixel.green);
      *bytes++ = Quickly<To255, WayOf<Pixel>>(pixel.red);
      *bytes++ = Quickly<To255, WayOf<Pixel>>(pixel.alpha);
    }
  }
}

template <class Way>
typename Way::Sample* PlaneRow(AVFrame& frame, int plane, int row) {
  return reinterpret_cast<typename Way::Sample*>(frame.data[plane] +
                                                 static_cast<std::ptrdiff_t>(row) * frame.linesize[plane]);
}

template <class Way, class Pixel>
void WriteAlpha(const Image& image, AVFrame& frame) {
  for (int row = 0; row < image.Height(); ++row) {
    auto* sample = PlaneRow<Way>(frame, 3, row);
    for (const Pixel& pixel : image.Row<Pixel>(row)) {
      *sample++ = Quickly<Way, WayOf<Pixel>>(pixel.alpha);
    }
  }
}

/// One row of GBRP of any depth.
template <class Way, class Pixel>
void WriteColorRow(std::span<const Pixel> pixels, AVFrame& frame, int row) {
  auto* __restrict green = PlaneRow<Way>(frame, 0, row);
  auto* __restrict blue = PlaneRow<Way>(frame, 1, row);
  auto* __restrict red = PlaneRow<Way>(frame, 2, row);
  for (std::size_t x = 0; x < pixels.size(); ++x) {
    green[x] = Quickly<Way, WayOf<Pixel>>(pixels[x].green);
    blue[x] = Quickly<Way, WayOf<Pixel>>(pixels[x].blue);
    red[x] = Quickly<Way, WayOf<Pixel>>(pixels[x].red);
  }
}

template <class Way, class Pixel>
void WriteColors(const Image& image, AVFrame& frame) {
  for (int row = 0; row < image.Height(); ++row) {
    WriteColorRow<Way>(image.Row<Pixel>(row), frame, row);
  }
}

template <class Pixel>
bool IsOpaque(std::span<const Pixel> pixels) {
  const auto opaque = FromFraction<WayOf<Pixel>>(1.0);
  bool all = true;
  for (const Pixel& pixel : pixels) {
    all &= pixel.alpha == opaque;
  }
  return all;
}

/// The same over black.
template <class Way, class Pixel>
void WriteColorsOverBlack(const Image& image, AVFrame& frame) {
  for (int row = 0; row < image.Height(); ++row) {
    const auto pixels = image.Row<Pixel>(row);
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
  const auto toYuv = [&](AVPixelFormat format, auto write) {
    const AvFrame rgb = AllocateFrame(format, frame.width, frame.height);
    write(image, *rgb);
    YuvOfRgb(*rgb, matrix, frame);
  };
  minihost::WithPixel(image.PixelDepth(), [&]<class Pixel>(Pixel) {
    switch (frame.format) {
      case AV_PIX_FMT_BGR0:
      case AV_PIX_FMT_BGRA:
        return WriteBytes<Pixel>(image, frame);
      case AV_PIX_FMT_GBRAP16:
        WriteAlpha<To65535, Pixel>(image, frame);
        [[fallthrough]];
      case AV_PIX_FMT_GBRP16:
        return WriteColors<To65535, Pixel>(image, frame);
      case AV_PIX_FMT_YUV420P:
        return toYuv(AV_PIX_FMT_GBRP, WriteColorsOverBlack<To255, Pixel>);
      case AV_PIX_FMT_YUV420P10:
      case AV_PIX_FMT_YUV444P10:
        return toYuv(AV_PIX_FMT_GBRP16, WriteColorsOverBlack<To65280, Pixel>);
      case AV_PIX_FMT_YUVA444P10:
        toYuv(AV_PIX_FMT_GBRP16, WriteColors<To65280, Pixel>);
        return WriteAlpha<To1023, Pixel>(image, frame);
      default:
        throw std::invalid_argument("a pixel format that is not written");
    }
  });
}

}  // namespace cli
