#include "cli/video/module/aac.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

extern "C" {
#include <libavutil/audio_fifo.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

namespace cli {
namespace {

void ThrowOn(int error) {
  if (error < 0) {
    throw std::runtime_error(LibavMessage(error));
  }
}

/// The sound's own where the encoder takes it.
int SampleRateFor(const AVCodec& encoder, int wanted) {
  for (const int* rate = encoder.supported_samplerates; rate && *rate; ++rate) {
    if (*rate == wanted) {
      return wanted;
    }
  }
  return 48'000;
}

}  // namespace

void AacTrack::FreeSwr::operator()(SwrContext* context) const {
  swr_free(&context);
}

void AacTrack::FreeFifo::operator()(AVAudioFifo* fifo) const {
  av_audio_fifo_free(fifo);
}

AacTrack::AacTrack(const AVStream& input, AVFormatContext& output, double begin, double end)
    : output_(output),
      timeBase_(input.time_base),
      begin_(begin),
      end_(end),
      decoded_(Allocated(av_frame_alloc())),
      packet_(Allocated(av_packet_alloc())) {
  OpenDecoder(input);
  OpenEncoder((output.oformat->flags & AVFMT_GLOBALHEADER) != 0);
  SwrContext* resampler = nullptr;
  ThrowOn(swr_alloc_set_opts2(&resampler, &encoder_->ch_layout, encoder_->sample_fmt, encoder_->sample_rate,
                              &encoder_->ch_layout, decoder_->sample_fmt, decoder_->sample_rate, 0, nullptr));
  resampler_.reset(resampler);
  ThrowOn(swr_init(resampler));
  fifo_.reset(Allocated(
      av_audio_fifo_alloc(encoder_->sample_fmt, encoder_->ch_layout.nb_channels, encoder_->sample_rate)));
  stream_ = Allocated(avformat_new_stream(&output, nullptr));
  ThrowOn(avcodec_parameters_from_context(stream_->codecpar, encoder_.get()));
  stream_->time_base = encoder_->time_base;
  stream_->disposition = input.disposition;
  av_dict_copy(&stream_->metadata, input.metadata, 0);
}

AacTrack::~AacTrack() = default;

void AacTrack::OpenDecoder(const AVStream& input) {
  const AVCodec* decoder = avcodec_find_decoder(input.codecpar->codec_id);
  ThrowOn(decoder ? 0 : AVERROR_DECODER_NOT_FOUND);
  decoder_.reset(Allocated(avcodec_alloc_context3(decoder)));
  ThrowOn(avcodec_parameters_to_context(decoder_.get(), input.codecpar));
  decoder_->pkt_timebase = input.time_base;
  decoder_->thread_count = 1;
  ThrowOn(avcodec_open2(decoder_.get(), decoder, nullptr));
}

void AacTrack::OpenEncoder(bool wantsGlobalHeader) {
  const AVCodec* encoder = avcodec_find_encoder(AV_CODEC_ID_AAC);
  ThrowOn(encoder ? 0 : AVERROR_ENCODER_NOT_FOUND);
  encoder_.reset(Allocated(avcodec_alloc_context3(encoder)));
  constexpr int kBitsOfChannel = 128'000;  // a second
  if (decoder_->ch_layout.order == AV_CHANNEL_ORDER_UNSPEC) {
    av_channel_layout_default(&encoder_->ch_layout, decoder_->ch_layout.nb_channels);
  } else {
    ThrowOn(av_channel_layout_copy(&encoder_->ch_layout, &decoder_->ch_layout));
  }
  encoder_->sample_rate = SampleRateFor(*encoder, decoder_->sample_rate);
  encoder_->sample_fmt = AV_SAMPLE_FMT_FLTP;
  encoder_->time_base = {1, encoder_->sample_rate};
  encoder_->bit_rate = std::int64_t{kBitsOfChannel} * encoder_->ch_layout.nb_channels;
  encoder_->thread_count = 1;
  encoder_->flags |= AV_CODEC_FLAG_BITEXACT | (wantsGlobalHeader ? AV_CODEC_FLAG_GLOBAL_HEADER : 0);
  ThrowOn(avcodec_open2(encoder_.get(), encoder, nullptr));
}

int AacTrack::Take(const AVPacket* packet) {
  avcodec_send_packet(decoder_.get(), packet);
  while (avcodec_receive_frame(decoder_.get(), decoded_.get()) >= 0) {
    Keep(*decoded_);
  }
  return EncodeWhole(packet == nullptr);
}

/// Brings the samples to their place: the first before the range are dropped, holes filled with silence.
void AacTrack::Keep(const AVFrame& frame) {
  const int rate = encoder_->sample_rate;
  const AvFrame samples(Allocated(av_frame_alloc()));
  samples->format = encoder_->sample_fmt;
  samples->sample_rate = rate;
  ThrowOn(av_channel_layout_copy(&samples->ch_layout, &encoder_->ch_layout));
  samples->nb_samples = swr_get_out_samples(resampler_.get(), frame.nb_samples);
  ThrowOn(av_frame_get_buffer(samples.get(), 0));
  samples->nb_samples = swr_convert(resampler_.get(), samples->extended_data, samples->nb_samples,
                                    const_cast<const std::uint8_t**>(frame.extended_data), frame.nb_samples);
  ThrowOn(samples->nb_samples);
  if (frame.best_effort_timestamp == AV_NOPTS_VALUE) {
    return Store(*samples, 0);
  }
  const double time = static_cast<double>(frame.best_effort_timestamp) * av_q2d(timeBase_) - begin_;
  const std::int64_t place = std::llround(time * rate);
  const int jitter = rate / 50;  // times are rounded
  const bool isFirst = stored_ == 0;
  if (place > stored_ + (isFirst ? 0 : jitter)) {
    const AvFrame silence(Allocated(av_frame_clone(samples.get())));
    ThrowOn(av_frame_make_writable(silence.get()));
    const int length = std::max(1, samples->nb_samples);
    av_samples_set_silence(silence->extended_data, 0, samples->nb_samples, silence->ch_layout.nb_channels,
                           encoder_->sample_fmt);
    while (samples->nb_samples > 0 && stored_ < place) {
      silence->nb_samples = static_cast<int>(std::min<std::int64_t>(length, place - stored_));
      Store(*silence, 0);
    }
  }
  const std::int64_t before = isFirst ? std::max(std::int64_t{0}, -place) : 0;
  Store(*samples, static_cast<int>(std::min<std::int64_t>(before, samples->nb_samples)));
}

/// Those from `from` on, up to the end of the range.
void AacTrack::Store(AVFrame& samples, int from) {
  const std::int64_t total = std::llround((end_ - begin_) * encoder_->sample_rate);
  const auto count = static_cast<int>(std::min<std::int64_t>(samples.nb_samples - from, total - stored_));
  if (count <= 0) {
    return;
  }
  constexpr int kMostChannels = 64;
  void* planes[kMostChannels] = {};
  for (int i = 0; i < std::min(kMostChannels, samples.ch_layout.nb_channels); ++i) {
    planes[i] = reinterpret_cast<float*>(samples.extended_data[i]) + from;
  }
  ThrowOn(av_audio_fifo_write(fifo_.get(), planes, count));
  stored_ += count;
}

int AacTrack::EncodeWhole(bool isLast) {
  const int whole = encoder_->frame_size;
  while (av_audio_fifo_size(fifo_.get()) >= (isLast ? 1 : whole)) {
    const AvFrame frame(Allocated(av_frame_alloc()));
    frame->nb_samples = std::min(whole, av_audio_fifo_size(fifo_.get()));
    frame->format = encoder_->sample_fmt;
    frame->sample_rate = encoder_->sample_rate;
    ThrowOn(av_channel_layout_copy(&frame->ch_layout, &encoder_->ch_layout));
    ThrowOn(av_frame_get_buffer(frame.get(), 0));
    av_audio_fifo_read(fifo_.get(), reinterpret_cast<void**>(frame->extended_data), frame->nb_samples);
    frame->pts = encoded_;
    encoded_ += frame->nb_samples;
    const int error = Send(frame.get());
    if (error < 0) {
      return error;
    }
  }
  return isLast ? Send(nullptr) : 0;
}

int AacTrack::Send(const AVFrame* frame) {
  int error = avcodec_send_frame(encoder_.get(), frame);
  while (error >= 0) {
    error = avcodec_receive_packet(encoder_.get(), packet_.get());
    if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) {
      return 0;
    }
    if (error >= 0) {
      packet_->stream_index = stream_->index;
      av_packet_rescale_ts(packet_.get(), encoder_->time_base, stream_->time_base);
      error = av_interleaved_write_frame(&output_, packet_.get());
    }
  }
  return error;
}

}  // namespace cli
