#include "cli/video/module/encoder.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "cli/report/error.h"
#include "cli/video/module/color.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/mastering_display_metadata.h>
}

namespace cli {
namespace {

using minihost::Depth;

AVPixelFormat PixelFormatOf(VideoCodec codec, const VideoTraits& traits) {
  switch (codec) {
    case VideoCodec::kH264:
      return AV_PIX_FMT_YUV420P;
    case VideoCodec::kHevc:
      return traits.depth == Depth::kBits8 ? AV_PIX_FMT_YUV420P : AV_PIX_FMT_YUV420P10;
    case VideoCodec::kProres:
      return traits.hasAlpha ? AV_PIX_FMT_YUVA444P10 : AV_PIX_FMT_YUV444P10;
    case VideoCodec::kFfv1:
      break;
  }
  if (traits.depth == Depth::kBits8) {
    return traits.hasAlpha ? AV_PIX_FMT_BGRA : AV_PIX_FMT_BGR0;
  }
  return traits.hasAlpha ? AV_PIX_FMT_GBRAP16 : AV_PIX_FMT_GBRP16;
}

const char* EncoderOf(VideoCodec codec) {
  switch (codec) {
    case VideoCodec::kH264:
      return "libx264";
    case VideoCodec::kHevc:
      return "libx265";
    case VideoCodec::kProres:
      return "prores_ks";
    case VideoCodec::kFfv1:
      break;
  }
  return "ffv1";
}

/// For the options of x265; the units are those of its messages: 1/50000 of the chart of colours, 1/10000
/// candela.
std::string LightLevelOptions(const LightLevels& levels) {
  std::string options;
  if (levels.display.size() >= sizeof(AVMasteringDisplayMetadata)) {
    const auto& display = *reinterpret_cast<const AVMasteringDisplayMetadata*>(levels.display.data());
    const auto in = [](AVRational value, int unit) { return std::llround(av_q2d(value) * unit); };
    const auto point = [&](const AVRational(&xy)[2]) {
      return fmt::format("({},{})", in(xy[0], 50'000), in(xy[1], 50'000));
    };
    if (display.has_primaries && display.has_luminance) {
      const auto& [red, green, blue] = display.display_primaries;
      options += fmt::format(":master-display=G{}B{}R{}WP{}L({},{})", point(green), point(blue), point(red),
                             point(display.white_point), in(display.max_luminance, 10'000),
                             in(display.min_luminance, 10'000));
    }
  }
  if (levels.content.size() >= sizeof(AVContentLightMetadata)) {
    const auto& light = *reinterpret_cast<const AVContentLightMetadata*>(levels.content.data());
    options += fmt::format(":max-cll={},{}", light.MaxCLL, light.MaxFALL);
  }
  return options;
}

/// Of an encoder that could not be opened.
std::string WhyNotOpened(VideoCodec codec, const VideoTraits& traits, int error) {
  if (error == AVERROR(ENOMEM)) {
    return LibavMessage(error);
  }
  constexpr int kMostOfH264 = 16'384;
  constexpr int kLeastOfHevc = 16;
  std::string limit;
  if (codec == VideoCodec::kH264 && std::max(traits.width, traits.height) > kMostOfH264) {
    limit = fmt::format(", at most {} a side", kMostOfH264);
  }
  if (codec == VideoCodec::kHevc && std::min(traits.width, traits.height) < kLeastOfHevc) {
    limit = fmt::format(", at least {} a side", kLeastOfHevc);
  }
  return fmt::format("{} takes no {} x {} pixels at {:.5g} frames a second{}; write .mov with codec prores",
                     NameOfCodec(codec), traits.width, traits.height,
                     static_cast<double>(traits.rate.timeScale) / traits.rate.timeStep, limit);
}

/// `rowsOfSlices` is FFV1's: a picture is divided into so many rows and columns of slices.
void ChooseOptions(VideoCodec kind, const VideoTraits& traits, int rowsOfSlices, AVCodecContext& codec,
                   AvOptions& options) {
  // The number of threads changes what some encoders write, so it does not follow the machine.
  constexpr int kThreads = 2;
  const std::optional<int>& quality = traits.encoding.quality;
  codec.thread_count = kThreads;
  codec.flags |= AV_CODEC_FLAG_BITEXACT;
  switch (kind) {
    case VideoCodec::kH264:
      options.Set("crf", std::to_string(quality.value_or(16)).c_str());
      options.Set("preset", "medium");
      // The same bytes on every processor; the encoder takes the first picture's top field for the first
      // else.
      options.Set("x264-params", traits.fields == FieldOrder::kBottomFirst ? "cpu-independent=1:bff=1"
                                                                           : "cpu-independent=1");
      return;
    case VideoCodec::kHevc:
      options.Set("crf", std::to_string(quality.value_or(18)).c_str());
      options.Set("preset", "medium");
      // Neither threads nor words that follow the machine; the encoder would also talk on the terminal.
      options.Set(
          "x265-params",
          ("frame-threads=2:pools=2:info=0:log-level=none" + LightLevelOptions(traits.levels)).c_str());
      return;
    case VideoCodec::kProres:
      options.Set("profile", "4444");
      options.Set("alpha_bits", traits.hasAlpha ? "16" : "0");
      if (quality) {
        codec.flags |= AV_CODEC_FLAG_QSCALE;
        codec.global_quality = FF_QP2LAMBDA * *quality;
      }
      return;
    case VideoCodec::kFfv1: {
      codec.level = 3;
      codec.gop_size = 1;  // every picture stands alone
      codec.slices = rowsOfSlices * rowsOfSlices;
      options.Set("slicecrc", "1");
      return;
    }
  }
}

/// What any encoder has to know of the frames.
void Describe(VideoCodec kind, const VideoTraits& traits, AVCodecContext& codec) {
  constexpr int kFinestAspect = 10'000;
  const AVPixelFormat pixels = PixelFormatOf(kind, traits);
  const ColorTags tags = CompleteTags(traits.tags, pixels, traits.height);
  codec.width = traits.width;
  codec.height = traits.height;
  codec.pix_fmt = pixels;
  codec.time_base = {traits.rate.timeStep, traits.rate.timeScale};
  codec.framerate = {traits.rate.timeScale, traits.rate.timeStep};
  codec.sample_aspect_ratio = av_d2q(traits.pixelAspect, kFinestAspect);
  codec.colorspace = MatrixOf(tags);
  codec.color_primaries = static_cast<AVColorPrimaries>(tags.primaries);
  codec.color_trc = static_cast<AVColorTransferCharacteristic>(tags.transfer);
  codec.color_range = IsYuv(pixels) ? AVCOL_RANGE_MPEG : AVCOL_RANGE_JPEG;
  if (traits.fields != FieldOrder::kProgressive) {
    codec.field_order = traits.fields == FieldOrder::kTopFirst ? AV_FIELD_TT : AV_FIELD_BB;
    if (kind == VideoCodec::kH264 || kind == VideoCodec::kProres) {
      codec.flags |= AV_CODEC_FLAG_INTERLACED_DCT;
    }
  }
}

}  // namespace

bool IsSubsampled(VideoCodec codec) {
  return codec == VideoCodec::kH264 || codec == VideoCodec::kHevc;
}

AvCodec OpenEncoder(VideoCodec kind, const VideoTraits& traits, const AVOutputFormat& container,
                    const std::filesystem::path& path) {
  const AVCodec* encoder = avcodec_find_encoder_by_name(EncoderOf(kind));
  if (!encoder) {
    RefuseOutput(path, fmt::format("the encoder {} is not there", EncoderOf(kind)));
  }
  if (av_image_check_size(static_cast<unsigned>(traits.width), static_cast<unsigned>(traits.height), 0,
                          nullptr) < 0) {
    RefuseOutput(path, fmt::format("{} x {} pixels are more than a video can have, some 260 million",
                                   traits.width, traits.height));
  }
  AvCodec codec;
  // Returns 0 or the libraries' error.
  const auto open = [&](int rowsOfSlices) {
    codec.reset(Allocated(avcodec_alloc_context3(encoder)));
    Describe(kind, traits, *codec);
    if (container.flags & AVFMT_GLOBALHEADER) {
      codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    }
    AvOptions options;
    ChooseOptions(kind, traits, rowsOfSlices, *codec, options);
    return avcodec_open2(codec.get(), encoder, options.Get());
  };
  // FFV1 says "not implemented" when a slice is too large for it.
  constexpr int kMostRows = 16;
  constexpr int kSmallestToDivide = 32;  // pixels a side
  int rowsOfSlices = std::min(traits.width, traits.height) < kSmallestToDivide ? 1 : 2;
  int error = open(rowsOfSlices);
  while (error == AVERROR(ENOSYS) && rowsOfSlices < kMostRows) {
    error = open(++rowsOfSlices);
  }
  if (error < 0) {
    RefuseOutput(path, WhyNotOpened(kind, traits, error));
  }
  return codec;
}

}  // namespace cli
