#include "cli/video/module/writer.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "cli/report/error.h"
#include "cli/video/module/carry.h"
#include "cli/video/module/encoder.h"
#include "cli/video/module/pixels_out.h"

namespace cli {
namespace {

using minihost::Depth;
using minihost::Image;

struct VideoFrame : EncodedFrame {
  AvFrame frame;
};

void AddLightLevels(const LightLevels& levels, AVStream& stream) {
  const auto add = [&](AVPacketSideDataType type, const std::vector<std::uint8_t>& bytes) {
    if (!bytes.empty()) {
      std::ranges::copy(bytes, Allocated(av_stream_new_side_data(&stream, type, bytes.size())));
    }
  };
  add(AV_PKT_DATA_MASTERING_DISPLAY_METADATA, levels.display);
  add(AV_PKT_DATA_CONTENT_LIGHT_LEVEL, levels.content);
}

}  // namespace

VideoWriter::VideoWriter(const std::filesystem::path& path, const std::filesystem::path& file,
                         const VideoTraits& traits)
    : path_(path),
      fileName_(LibavName(file)),
      format_(VideoFormatOf(path).value()),
      kind_(CodecOf(format_, traits.encoding)),
      fields_(traits.fields),
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
  codec_ = OpenEncoder(kind_, traits, *file_->oformat, path_);
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

void VideoWriter::OpenSound(const FileRange& sound, SoundWish wish) {
  sound_.emplace(sound, *file_, wish);
  notes_.insert(notes_.end(), sound_->Notes().begin(), sound_->Notes().end());
}

void VideoWriter::WriteHeader() {
  AvOptions options;
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
