#include "cli/video/module/sound.h"

#include <fmt/format.h>

#include <cmath>
#include <stdexcept>

#include "cli/report/error.h"

namespace cli {
namespace {

AvInput Open(const std::filesystem::path& path) {
  AvInput file;
  const int error = OpenInput(path, file);
  if (error < 0) {
    Refuse(ExitCode::kInput, "cannot read the sound of '{}': {}", path.string(), LibavMessage(error));
  }
  return file;
}

AVStream& AddCopy(const AVStream& sound, AVFormatContext& output) {
  AVStream& stream = *Allocated(avformat_new_stream(&output, nullptr));
  if (avcodec_parameters_copy(stream.codecpar, sound.codecpar) < 0) {
    throw std::bad_alloc();
  }
  stream.codecpar->codec_tag = 0;  // that of the other container
  stream.time_base = sound.time_base;
  stream.disposition = sound.disposition;
  av_dict_copy(&stream.metadata, sound.metadata, 0);
  return stream;
}

/// Whether the container can hold the sound.  Its list of codecs promises more than it accepts in the end,
/// such as FLAC in MOV, so that only trying tells.
bool CanHold(const AVOutputFormat& container, const AVStream& sound) {
  if (avformat_query_codec(&container, sound.codecpar->codec_id, FF_COMPLIANCE_NORMAL) != 1) {
    return false;
  }
  AVFormatContext* file = nullptr;
  if (avformat_alloc_output_context2(&file, &container, nullptr, nullptr) < 0) {
    throw std::bad_alloc();
  }
  const AvOutput owner(file);
  const std::string nowhere = LibavName("/dev/null");
  if (avio_open(&file->pb, nowhere.c_str(), AVIO_FLAG_WRITE) < 0) {
    return true;
  }
  AddCopy(sound, *file);
  return avformat_init_output(file, nullptr) >= 0;
}

}  // namespace

SoundCopy::SoundCopy(const FileRange& range, AVFormatContext& output, SoundWish wish)
    : range_(range),
      wish_(wish),
      output_(output),
      input_(Open(range.path)),
      next_(Allocated(av_packet_alloc())) {
  tracks_.resize(input_->nb_streams);
  for (unsigned i = 0; i < input_->nb_streams; ++i) {
    AVStream& stream = *input_->streams[i];
    if (stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO) {
      AddTrack(stream);
    }
    if (tracks_[i].output < 0) {
      stream.discard = AVDISCARD_ALL;
    }
  }
  // Where the file cannot jump, everything before the range is read and dropped.
  constexpr double kLeadSeconds = 1;
  const auto from = static_cast<std::int64_t>((range.begin - kLeadSeconds) * AV_TIME_BASE);
  if (from > 0) {
    avformat_seek_file(input_.get(), -1, INT64_MIN, from, from, 0);
  }
}

/// "the sound", with its number when there are others; counted from 1.
std::string SoundCopy::NameOf(const AVStream& track) const {
  int number = 0;
  int count = 0;
  for (unsigned i = 0; i < input_->nb_streams; ++i) {
    const AVStream* stream = input_->streams[i];
    count += stream->codecpar->codec_type == AVMEDIA_TYPE_AUDIO ? 1 : 0;
    number = stream == &track ? count : number;
  }
  return count == 1 ? "the sound" : fmt::format("sound track {} of {}", number, count);
}

void SoundCopy::AddTrack(const AVStream& input) {
  const bool fits = wish_ != SoundWish::kAac && CanHold(*output_.oformat, input);
  const bool isAac = input.codecpar->codec_id == AV_CODEC_ID_AAC && CanHold(*output_.oformat, input);
  if (!fits && wish_ == SoundWish::kCopy) {
    Refuse(ExitCode::kOutput, "{} of '{}' cannot be copied: {} cannot hold {}; encode it with --sound aac",
           NameOf(input), range_.path.filename().string(), output_.oformat->name,
           avcodec_get_name(input.codecpar->codec_id));
  }
  if (!fits && !isAac) {
    return AddEncoded(input, tracks_[static_cast<std::size_t>(input.index)]);
  }
  Track& track = tracks_[static_cast<std::size_t>(input.index)];
  track.output = AddCopy(input, output_).index;
  track.begin = std::llround(range_.begin / av_q2d(input.time_base));
  const AVRational sample{1, std::max(1, input.codecpar->sample_rate)};
  track.padding = av_rescale_q(input.codecpar->initial_padding, sample, input.time_base);
}

void SoundCopy::AddEncoded(const AVStream& input, Track& track) {
  const char* codec = avcodec_get_name(input.codecpar->codec_id);
  const auto note = [&](const std::string& text) {
    notes_.push_back(fmt::format("{} of '{}' is {}", NameOf(input), range_.path.filename().string(), text));
  };
  try {
    track.encoded = std::make_unique<AacTrack>(input, output_, range_.begin, range_.end);
    track.begin = std::llround(range_.begin / av_q2d(input.time_base));
    track.output = static_cast<int>(output_.nb_streams) - 1;
    if (wish_ == SoundWish::kAuto) {
      note(fmt::format("encoded as AAC: {} cannot hold {}", output_.oformat->name, codec));
    }
  } catch (const std::runtime_error& error) {
    note(fmt::format("left out: {} cannot be encoded as AAC: {}", codec, error.what()));
  }
}

/// Finds the next packet of the range; false at its end.
bool SoundCopy::Fetch() {
  while (!hasNext_ && !atEnd_) {
    if (av_read_frame(input_.get(), next_.get()) < 0) {
      atEnd_ = true;
      break;
    }
    const Track& track = tracks_[static_cast<std::size_t>(next_->stream_index)];
    // Edit lists let a packet that began before the range stay; elsewhere it would move the picture.
    const bool edits = (output_.oformat->flags & AVFMT_TS_NEGATIVE) != 0;
    const std::int64_t firstEnd = edits || track.encoded ? next_->duration : track.padding + 1;
    hasNext_ = track.output >= 0 && next_->pts != AV_NOPTS_VALUE && next_->pts + firstEnd > track.begin;
    if (!hasNext_) {
      av_packet_unref(next_.get());
    }
  }
  return hasNext_;
}

int SoundCopy::CopyUntil(double seconds) {
  while (Fetch()) {
    const AVRational timeBase = input_->streams[next_->stream_index]->time_base;
    const double time = static_cast<double>(next_->pts) * av_q2d(timeBase);
    if (time >= range_.end) {
      // Streams are interleaved loosely, so that others may still have something before the end.
      constexpr double kLooseSeconds = 5;
      atEnd_ = time >= range_.end + kLooseSeconds;
      hasNext_ = false;
      av_packet_unref(next_.get());
      continue;
    }
    if (time >= range_.begin + seconds) {
      return 0;
    }
    const int error = Send();
    if (error < 0) {
      return error;
    }
  }
  return 0;
}

int SoundCopy::Finish() {
  int error = 0;
  for (const Track& track : tracks_) {
    error = track.encoded && error >= 0 ? track.encoded->Take(nullptr) : error;
  }
  return error;
}

int SoundCopy::Send() {
  const Track& track = tracks_[static_cast<std::size_t>(next_->stream_index)];
  if (track.encoded) {
    hasNext_ = false;
    const int error = track.encoded->Take(next_.get());
    av_packet_unref(next_.get());
    return error;
  }
  const AVStream& sound = *input_->streams[next_->stream_index];
  const AVRational from = sound.time_base;
  next_->pts -= track.begin;
  if (next_->dts != AV_NOPTS_VALUE) {
    next_->dts -= track.begin;
  }
  next_->stream_index = track.output;
  next_->pos = -1;
  const double time = static_cast<double>(next_->pts) * av_q2d(from);
  av_packet_rescale_ts(next_.get(), from, output_.streams[track.output]->time_base);
  hasNext_ = false;
  const int error = av_interleaved_write_frame(&output_, next_.get());
  // Some packets are taken apart for another container, which tells when they are no sound.
  if (error == AVERROR_INVALIDDATA) {
    Refuse(ExitCode::kInput,
           "{} of '{}' is damaged {:.2f} s from the first frame; leave it out with --sound none",
           NameOf(sound), range_.path.filename().string(), time);
  }
  return error;
}

}  // namespace cli
