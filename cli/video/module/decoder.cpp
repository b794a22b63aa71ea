#include "cli/video/module/decoder.h"

#include <fmt/format.h>

#include <cstdint>
#include <span>
#include <string_view>

#include "cli/file/extension.h"
#include "cli/report/error.h"

extern "C" {
#include <libavutil/crc.h>
}

namespace cli {
namespace {

std::string WhyNotOpened(int error, const std::filesystem::path& path) {
  const std::string extension = LowerExtension(path);
  if (error == AVERROR_INVALIDDATA && (extension == ".heic" || extension == ".heif")) {
    return "HEIC is not read; make a JPEG, PNG or TIFF of it first";
  }
  if (error == AVERROR_EOF) {
    return "it ends before its first picture";
  }
  if (error == AVERROR_INVALIDDATA) {
    return "it is not in a format that is known, or its start or index is damaged or cut off";
  }
  return LibavMessage(error);
}

/// Whether check sums tell that a packet of FFV1 is not as it was written: its decoder paints over damage
/// without a word.  A packet is a row of slices, each ending with its length in 3 bytes and, when there are
/// sums, one byte of status and the CRC that makes the CRC of the whole slice 0.  False when it was written
/// without sums.
bool IsDamagedFfv1(std::span<const std::uint8_t> packet) {
  constexpr std::size_t kTrailer = 3 + 1 + 4;
  const AVCRC* table = av_crc_get_table(AV_CRC_32_IEEE);
  bool damaged = false;
  while (!packet.empty()) {
    if (packet.size() < kTrailer) {
      return false;
    }
    const auto length = packet.last(kTrailer);
    const std::size_t size = (length[0] * 65536u + length[1] * 256u + length[2]) + kTrailer;
    // Without sums the trailer is shorter, and what is read as a length leads nowhere.
    if (size > packet.size()) {
      return false;
    }
    damaged = damaged || av_crc(table, 0, packet.last(size).data(), size) != 0;
    packet = packet.first(packet.size() - size);
  }
  return damaged;
}

}  // namespace

VideoDecoder::VideoDecoder(const std::filesystem::path& path)
    : path_(path), packet_(Allocated(av_packet_alloc())), frame_(Allocated(av_frame_alloc())) {
  SilenceLibav();
  Open();
  OpenCodec();
  index_.emplace(*file_, Stream());
  if (!index_->Damage().empty()) {
    CutUndecodableEnd();
  }
  if (index_->PictureCount() == 0) {
    RefuseInput(path_, index_->Damage().empty() ? "it holds no pictures" : index_->Damage());
  }
  Rewind();
}

void VideoDecoder::Open() {
  const int error = OpenInput(path_, file_);
  if (error < 0) {
    RefuseInput(path_, WhyNotOpened(error, path_));
  }
  // FFmpeg plays any text as the screen of a terminal.
  if (file_->iformat->name == std::string_view("tty")) {
    RefuseInput(path_, "it is a text, neither picture nor video");
  }
  stream_ = av_find_best_stream(file_.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  if (stream_ < 0) {
    RefuseInput(path_, "there is neither picture nor video in it");
  }
  for (int i = 0; i < static_cast<int>(file_->nb_streams); ++i) {
    if (i != stream_) {
      file_->streams[i]->discard = AVDISCARD_ALL;
    }
  }
}

void VideoDecoder::OpenCodec() {
  const AVCodecParameters& video = *Stream().codecpar;
  const AVCodec* decoder = avcodec_find_decoder(video.codec_id);
  if (!decoder) {
    RefuseInput(path_, fmt::format("there is no decoder for {}", avcodec_get_name(video.codec_id)));
  }
  codec_.reset(Allocated(avcodec_alloc_context3(decoder)));
  codec_->pkt_timebase = Stream().time_base;
  codec_->thread_count = 0;  // as many as there are processors; pictures do not depend on it
  // Where every picture stands alone any fault is damage.  Elsewhere small faults are common and harmless,
  // and the frames tell of the large ones.
  const AVCodecDescriptor* descriptor = avcodec_descriptor_get(video.codec_id);
  if (descriptor && (descriptor->props & AV_CODEC_PROP_INTRA_ONLY)) {
    codec_->err_recognition = AV_EF_CRCCHECK | AV_EF_EXPLODE;
  }
  int error = avcodec_parameters_to_context(codec_.get(), &video);
  if (error >= 0) {
    error = avcodec_open2(codec_.get(), decoder, nullptr);
  }
  if (error < 0) {
    RefuseInput(path_, LibavMessage(error));
  }
}

/// To the start.  Not every format can jump there, but every file can be opened again.
void VideoDecoder::Rewind() {
  Open();
  avcodec_flush_buffers(codec_.get());
  position_.reset();
  decoded_ = 0;
  fromStart_ = true;
}

void VideoDecoder::SeekTo(std::size_t picture) {
  if (av_seek_frame(file_.get(), stream_, index_->TimeOf(picture), AVSEEK_FLAG_BACKWARD) < 0) {
    Rewind();
    return;
  }
  avcodec_flush_buffers(codec_.get());
  position_.reset();
  fromStart_ = false;
}

void VideoDecoder::StartNear(std::size_t picture) {
  constexpr std::size_t kWorthAJump = 16;  // pictures that a jump saves
  const std::size_t key = index_->KeyBefore(picture);
  if (position_ && *position_ <= picture && key <= *position_ + kWorthAJump) {
    return;
  }
  const bool atStart = fromStart_ && !position_;
  if (key > 0) {
    SeekTo(key);
  } else if (!atStart) {
    Rewind();
  }
}

/// Where a file breaks off, its last picture may have come in part, and others without what they are built
/// on.
void VideoDecoder::CutUndecodableEnd() {
  const std::size_t count = index_->PictureCount();
  std::size_t whole = 0;
  Rewind();
  try {
    for (std::size_t i = count > 0 ? index_->KeyBefore(count - 1) : 0; i < count; ++i) {
      whole = i;
      Decode(i);
    }
  } catch (const DecodeFailure&) {
    index_->EndBefore(whole);
  }
}

const AVFrame& VideoDecoder::Decode(std::size_t picture) {
  StartNear(picture);
  for (;;) {
    std::string reason = "its picture does not come out of the decoder";
    try {
      if (Reach(picture)) {
        return *frame_;
      }
    } catch (const DecodeFailure& failure) {
      reason = failure.what();
    }
    position_.reset();
    // A jump may have missed its aim; from the start there is nothing to miss.
    if (fromStart_) {
      fromStart_ = false;
      throw DecodeFailure(reason);
    }
    Rewind();
  }
}

bool VideoDecoder::Reach(std::size_t picture) {
  while (!position_ || *position_ < picture) {
    if (!Advance()) {
      return false;
    }
  }
  return *position_ == picture;
}

/// Decodes the next picture that the index knows; false at the end.
bool VideoDecoder::Advance() {
  for (;;) {
    const int error = avcodec_receive_frame(codec_.get(), frame_.get());
    if (error == AVERROR_EOF) {
      return false;
    }
    if (error == AVERROR(EAGAIN)) {
      SendPacket();
      continue;
    }
    if (error < 0) {
      throw DecodeFailure(LibavMessage(error));
    }
    const auto position = PositionOfFrame();
    if (!position) {
      continue;
    }
    if (frame_->decode_error_flags != 0 || (frame_->flags & AV_FRAME_FLAG_CORRUPT) ||
        damaged_.contains(frame_->best_effort_timestamp)) {
      throw DecodeFailure("it, or one that it is built on, is damaged");
    }
    position_ = position;
    return true;
  }
}

void VideoDecoder::SendPacket() {
  int error = 0;
  do {
    av_packet_unref(packet_.get());
    error = av_read_frame(file_.get(), packet_.get());
  } while (error >= 0 && packet_->stream_index != stream_);
  if (error >= 0 && codec_->codec_id == AV_CODEC_ID_FFV1 &&
      IsDamagedFfv1({packet_->data, static_cast<std::size_t>(packet_->size)})) {
    // The decoder may be some pictures behind, so the failure waits for this one to come out.
    damaged_.insert(packet_->pts);
  }
  // The index knows where the file breaks off; for the decoder that is the end like any other.
  error = avcodec_send_packet(codec_.get(), error < 0 ? nullptr : packet_.get());
  av_packet_unref(packet_.get());
  if (error < 0 && error != AVERROR_EOF) {
    throw DecodeFailure(LibavMessage(error));
  }
}

std::optional<std::size_t> VideoDecoder::PositionOfFrame() {
  if (!index_->HasTimes()) {
    return decoded_++;
  }
  const std::size_t position = index_->PictureAtTime(frame_->best_effort_timestamp);
  if (position == index_->PictureCount()) {
    return {};
  }
  if (index_->TimeOf(position) != frame_->best_effort_timestamp) {
    return {};
  }
  return position;
}

}  // namespace cli
