#include "cli/video/module/writer.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "cli/report/error.h"
#include "cli/video/module/carry.h"
#include "cli/video/module/pixels_out.h"

extern "C" {
#include <libavutil/dict.h>
#include <libavutil/imgutils.h>
#include <libavutil/mastering_display_metadata.h>
}

namespace cli {
namespace {

using minihost::Depth;
using minihost::Image;

struct VideoFrame : EncodedFrame {
  AvFrame frame;
};

/// Options of muxers and encoders by name.
class Options {
 public:
  Options() = default;
  ~Options() { av_dict_free(&entries_); }
  Options(const Options&) = delete;
  Options& operator=(const Options&) = delete;

  void Set(const char* name, const char* value) {
    if (av_dict_set(&entries_, name, value, 0) < 0) {
      throw std::bad_alloc();
    }
  }
  AVDictionary** Get() { return &entries_; }

 private:
  AVDictionary* entries_ = nullptr;
};

bool IsSubsampled(VideoCodec codec) {
  return codec == VideoCodec::kH264 || codec == VideoCodec::kHevc;
}

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

void AddLightLevels(const LightLevels& levels, AVStream& stream) {
  const auto add = [&](AVPacketSideDataType type, const std::vector<std::uint8_t>& bytes) {
    if (!bytes.empty()) {
      std::ranges::copy(bytes, Allocated(av_stream_new_side_data(&stream, type, bytes.size())));
    }
  };
  add(AV_PKT_DATA_MASTERING_DISPLAY_METADATA, levels.display);
  add(AV_PKT_DATA_CONTENT_LIGHT_LEVEL, levels.content);
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
                   Options& options) {
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

}  // namespace

VideoWriter::VideoWriter(const std::filesystem::path& path, const std::filesystem::path& file,
                         const VideoTraits& traits)
    : path_(path),
      fileName_(LibavName(file)),
      format_(VideoFormatOf(path).value()),
      kind_(CodecOf(format_, traits.encoding)),
      packet_(Allocated(av_packet_alloc())) {
  SilenceLibav();
  if (IsSubsampled(kind_) && (traits.width % 2 || traits.height % 2)) {
    RefuseOutput(
        path_, fmt::format("{} takes an even width and height, and the picture is {} x {}; "
                           "crop it by a column or a row, or write {}",
                           format_ == VideoFormat::kMp4 ? "MP4" : NameOfCodec(kind_), traits.width,
                           traits.height, format_ == VideoFormat::kMp4 ? ".mov or .mkv" : "without --codec"));
  }
  NoteLosses(traits);
  OpenOutput();
  OpenCodec(traits);
  if (traits.carried) {
    const auto notes = CarryOver(*traits.carried, *file_, *stream_);
    notes_.insert(notes_.end(), notes.begin(), notes.end());
  }
  if (traits.sound && traits.encoding.sound != SoundWish::kNone) {
    OpenSound(*traits.sound, traits.encoding.sound);
  }
  WriteHeader();
}

VideoWriter::~VideoWriter() = default;

void VideoWriter::NoteLosses(const VideoTraits& traits) {
  if (IsSubsampled(kind_) && traits.hasAlpha) {
    notes_.push_back(fmt::format(
        "'{}' cannot hold alpha; the picture lies over black (.mov and .mkv with their own codecs hold it)",
        path_.string()));
  }
  if (kind_ == VideoCodec::kH264 && traits.depth != Depth::kBits8) {
    const bool isHdr =
        traits.tags.transfer == AVCOL_TRC_SMPTE2084 || traits.tags.transfer == AVCOL_TRC_ARIB_STD_B67;
    notes_.push_back(
        fmt::format("'{}' holds 8 bits a channel, less than the frames have{}; codec hevc holds 10",
                    path_.string(), isHdr ? ", and HDR shows steps in 8" : ""));
  }
  // Frames of 16 bits come in float too.
  constexpr int kBits = 10;
  const bool isTooFine =
      traits.depth == Depth::kFloat || (traits.depth == Depth::kBits16 && traits.sourceBits > kBits);
  if ((kind_ == VideoCodec::kHevc || kind_ == VideoCodec::kProres) && isTooFine) {
    notes_.push_back(fmt::format(
        "'{}' holds {} bits a channel, less than the frames have{}; .mkv with codec ffv1 holds 16",
        path_.string(), kBits, traits.sourceBits > kBits ? fmt::format(" ({})", traits.sourceBits) : ""));
  }
  if (kind_ == VideoCodec::kHevc && traits.fields != FieldOrder::kProgressive) {
    notes_.push_back(fmt::format(
        "'{}' is not coded as interlaced, though its frames are; only its header says so", path_.string()));
  }
}

/// For what the libraries return.  Of a failing disk the file itself knows best, and sometimes alone.
void VideoWriter::Check(int error) const {
  if (file_->pb && file_->pb->error < 0) {
    RefuseOutput(path_, LibavMessage(file_->pb->error));
  }
  if (error < 0) {
    RefuseOutput(path_, LibavMessage(error));
  }
}

void VideoWriter::OpenOutput() {
  constexpr const char* kMuxers[] = {"mp4", "mov", "matroska"};
  // By its name, because MP4 is read once more when its index moves to the front.
  AVFormatContext* file = nullptr;
  const int error =
      avformat_alloc_output_context2(&file, nullptr, kMuxers[static_cast<int>(format_)], fileName_.c_str());
  if (error < 0) {
    RefuseOutput(path_, LibavMessage(error));
  }
  file_.reset(file);
  file_->flags |= AVFMT_FLAG_BITEXACT;  // no date, no random numbers
  Check(avio_open(&file_->pb, fileName_.c_str(), AVIO_FLAG_WRITE));
}

void VideoWriter::OpenCodec(const VideoTraits& traits) {
  const AVCodec* encoder = avcodec_find_encoder_by_name(EncoderOf(kind_));
  if (!encoder) {
    RefuseOutput(path_, fmt::format("the encoder {} is not there", EncoderOf(kind_)));
  }
  if (av_image_check_size(static_cast<unsigned>(traits.width), static_cast<unsigned>(traits.height), 0,
                          nullptr) < 0) {
    RefuseOutput(path_, fmt::format("{} x {} pixels are more than a video can have, some 260 million",
                                    traits.width, traits.height));
  }
  // FFV1 says "not implemented" when a slice is too large for it.
  constexpr int kMostRows = 16;
  constexpr int kSmallestToDivide = 32;  // pixels a side
  int rowsOfSlices = std::min(traits.width, traits.height) < kSmallestToDivide ? 1 : 2;
  int error = TryCodec(*encoder, traits, rowsOfSlices);
  while (error == AVERROR(ENOSYS) && rowsOfSlices < kMostRows) {
    error = TryCodec(*encoder, traits, ++rowsOfSlices);
  }
  if (error < 0) {
    RefuseOutput(path_, WhyNotOpened(kind_, traits, error));
  }
  stream_ = Allocated(avformat_new_stream(file_.get(), nullptr));
  Check(avcodec_parameters_from_context(stream_->codecpar, codec_.get()));
  if (kind_ == VideoCodec::kHevc && format_ != VideoFormat::kMkv) {
    stream_->codecpar->codec_tag = MKTAG('h', 'v', 'c', '1');  // the name under which players look for it
  }
  if (fields_ != FieldOrder::kProgressive) {
    // Encoders set their own.
    stream_->codecpar->field_order = fields_ == FieldOrder::kTopFirst ? AV_FIELD_TT : AV_FIELD_BB;
  }
  stream_->time_base = codec_->time_base;
  stream_->avg_frame_rate = codec_->framerate;
  stream_->sample_aspect_ratio = codec_->sample_aspect_ratio;
  AddLightLevels(traits.levels, *stream_);
}

/// Returns 0 or the libraries' error.
int VideoWriter::TryCodec(const AVCodec& encoder, const VideoTraits& traits, int rowsOfSlices) {
  codec_.reset(Allocated(avcodec_alloc_context3(&encoder)));
  const AVPixelFormat pixels = PixelFormatOf(kind_, traits);
  const ColorTags tags = CompleteTags(traits.tags, pixels, traits.height);
  constexpr int kFinestAspect = 10'000;
  codec_->width = traits.width;
  codec_->height = traits.height;
  codec_->pix_fmt = pixels;
  codec_->time_base = {traits.rate.timeStep, traits.rate.timeScale};
  codec_->framerate = {traits.rate.timeScale, traits.rate.timeStep};
  codec_->sample_aspect_ratio = av_d2q(traits.pixelAspect, kFinestAspect);
  codec_->colorspace = MatrixOf(tags);
  codec_->color_primaries = static_cast<AVColorPrimaries>(tags.primaries);
  codec_->color_trc = static_cast<AVColorTransferCharacteristic>(tags.transfer);
  codec_->color_range = IsYuv(pixels) ? AVCOL_RANGE_MPEG : AVCOL_RANGE_JPEG;
  fields_ = traits.fields;
  if (fields_ != FieldOrder::kProgressive) {
    codec_->field_order = fields_ == FieldOrder::kTopFirst ? AV_FIELD_TT : AV_FIELD_BB;
    if (kind_ == VideoCodec::kH264 || kind_ == VideoCodec::kProres) {
      codec_->flags |= AV_CODEC_FLAG_INTERLACED_DCT;
    }
  }
  if (file_->oformat->flags & AVFMT_GLOBALHEADER) {
    codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  }
  Options options;
  ChooseOptions(kind_, traits, rowsOfSlices, *codec_, options);
  return avcodec_open2(codec_.get(), &encoder, options.Get());
}

void VideoWriter::OpenSound(const FileRange& sound, SoundWish wish) {
  sound_.emplace(sound, *file_, wish);
  notes_.insert(notes_.end(), sound_->Notes().begin(), sound_->Notes().end());
}

void VideoWriter::WriteHeader() {
  Options options;
  if (format_ != VideoFormat::kMkv) {
    options.Set("movflags", "+faststart");
  }
  Check(avformat_write_header(file_.get(), options.Get()));
}

std::unique_ptr<EncodedFrame> VideoWriter::Encode(std::int32_t, const Image& image,
                                                  const PictureTraits&) const {
  if (image.Width() != codec_->width || image.Height() != codec_->height) {
    throw std::invalid_argument("a frame of another size than the video");
  }
  auto encoded = std::make_unique<VideoFrame>();
  encoded->frame = AllocateFrame(codec_->pix_fmt, codec_->width, codec_->height);
  AVFrame& frame = *encoded->frame;
  frame.sample_aspect_ratio = codec_->sample_aspect_ratio;
  frame.colorspace = codec_->colorspace;
  frame.color_primaries = codec_->color_primaries;
  frame.color_trc = codec_->color_trc;
  frame.color_range = codec_->color_range;
  frame.interlaced_frame = fields_ != FieldOrder::kProgressive ? 1 : 0;
  frame.top_field_first = fields_ == FieldOrder::kTopFirst ? 1 : 0;
  EncodePixels(image, codec_->colorspace, frame);
  return encoded;
}

void VideoWriter::Write(std::int32_t, std::unique_ptr<EncodedFrame> encoded) {
  AVFrame& frame = *static_cast<VideoFrame&>(*encoded).frame;
  frame.pts = written_++;
  SendFrame(&frame);
  if (sound_) {
    Check(sound_->CopyUntil(SecondsWritten()));
  }
}

double VideoWriter::SecondsWritten() const {
  return static_cast<double>(written_) * av_q2d(codec_->time_base);
}

/// Null ends the stream.
void VideoWriter::SendFrame(AVFrame* frame) {
  Check(avcodec_send_frame(codec_.get(), frame));
  for (;;) {
    const int error = avcodec_receive_packet(codec_.get(), packet_.get());
    if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) {
      return;
    }
    Check(error);
    packet_->stream_index = stream_->index;
    packet_->duration = 1;
    av_packet_rescale_ts(packet_.get(), codec_->time_base, stream_->time_base);
    Check(av_interleaved_write_frame(file_.get(), packet_.get()));
  }
}

void VideoWriter::Finish() {
  SendFrame(nullptr);
  if (sound_) {
    Check(sound_->CopyUntil(SecondsWritten()));
    Check(sound_->Finish());
  }
  Check(av_write_trailer(file_.get()));
  avio_flush(file_->pb);
  Check(0);
  const int closed = avio_closep(&file_->pb);
  Check(closed);
}

std::unique_ptr<VideoEncoding> EncodeVideo(const std::filesystem::path& path,
                                           const std::filesystem::path& file, const VideoTraits& traits) {
  return std::make_unique<VideoWriter>(path, file, traits);
}

}  // namespace cli
