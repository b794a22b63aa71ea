#include "cli/video/pixels_out.h"

#include <cstdint>
#include <stdexcept>

#include "cli/frames/sample_convert.h"
#include "cli/video/rgb.h"

namespace cli {
namespace {

using minihost::Image;

using To1023 = CountTo<std::uint16_t, 1023>;

template <class Pixel>
void WriteBytes(const Image& image, AVFrame& frame) {
  for (int row = 0; row < image.Height(); ++row) {
    std::uint8_t* bytes = frame.data[0] + static_cast<std::ptrdiff_t>(row) * frame.linesize[0];
    for (const Pixel& pixel : image.Row<Pixel>(row)) {
      *bytes++ = ConvertSample<To255, WayOf<Pixel>>(pixel.blue);
      *bytes++ = ConvertSample<To255, WayOf<Pixel>>(pixel.green);
      *bytes++ = ConvertSample<To255, WayOf<Pixel>>(pixel.red);
      *bytes++ = ConvertSample<To255, WayOf<Pixel>>(pixel.alpha);
    }
  }
}

/// Fills a plane with what `sampleOf` makes of the pixels.
template <class Pixel, class Way, class SampleOf>
void WritePlane(const Image& image, AVFrame& frame, int plane, SampleOf sampleOf) {
  for (int row = 0; row < image.Height(); ++row) {
    auto* sample = reinterpret_cast<typename Way::Sample*>(
        frame.data[plane] + static_cast<std::ptrdiff_t>(row) * frame.linesize[plane]);
    for (const Pixel& pixel : image.Row<Pixel>(row)) {
      *sample++ = sampleOf(pixel);
    }
  }
}

template <class Way, class Pixel>
void WriteAlpha(const Image& image, AVFrame& frame) {
  WritePlane<Pixel, Way>(image, frame, 3,
                         [](const Pixel& pixel) { return ConvertSample<Way, WayOf<Pixel>>(pixel.alpha); });
}

/// GBRP of any depth.
template <class Way, class Pixel>
void WriteColors(const Image& image, AVFrame& frame) {
  int plane = 0;
  for (const auto channel : {&Pixel::green, &Pixel::blue, &Pixel::red}) {
    WritePlane<Pixel, Way>(image, frame, plane++, [channel](const Pixel& pixel) {
      return ConvertSample<Way, WayOf<Pixel>>(pixel.*channel);
    });
  }
}

/// The same over black.
template <class Way, class Pixel>
void WriteColorsOverBlack(const Image& image, AVFrame& frame) {
  int plane = 0;
  for (const auto channel : {&Pixel::green, &Pixel::blue, &Pixel::red}) {
    WritePlane<Pixel, Way>(image, frame, plane++, [channel](const Pixel& pixel) {
      const float alpha = ConvertSample<ToOne, WayOf<Pixel>>(pixel.alpha);
      return ConvertSample<Way, ToOne>(ConvertSample<ToOne, WayOf<Pixel>>(pixel.*channel) * alpha);
    });
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
