// A track of sound, encoded anew as AAC.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "cli/video/module/libav.h"

struct SwrContext;
struct AVAudioFifo;

namespace cli {

/// Decodes the packets of one stream and writes those of another.
class AacTrack {
 public:
  /// Adds a stream to `output`, which has no header yet and outlives this.  `begin` and `end`, in seconds on
  /// the input's clock, are what is kept.  Throws std::runtime_error, half a sentence, when the sound cannot
  /// be decoded or encoded; then there is no new stream.
  AacTrack(const AVStream& input, AVFormatContext& output, double begin, double end);
  ~AacTrack();

  /// Packets in their order, null after the last.  Packets that cannot be decoded become silence.  Returns 0
  /// or the libraries' error of the output.
  int Take(const AVPacket* packet);

 private:
  struct FreeSwr {
    void operator()(SwrContext* context) const;
  };
  struct FreeFifo {
    void operator()(AVAudioFifo* fifo) const;
  };

  void OpenDecoder(const AVStream& input);
  void OpenEncoder(bool wantsGlobalHeader);
  void Keep(const AVFrame& frame);
  void Store(AVFrame& samples, int from);
  int EncodeWhole(bool isLast);
  int Send(const AVFrame* frame);

  AVFormatContext& output_;
  AVRational timeBase_;
  double begin_;
  double end_;
  AvCodec decoder_;
  AvCodec encoder_;
  std::unique_ptr<SwrContext, FreeSwr> resampler_;
  std::unique_ptr<AVAudioFifo, FreeFifo> fifo_;
  AvFrame decoded_;
  AvPacket packet_;
  AVStream* stream_ = nullptr;
  std::int64_t stored_ = 0;   // samples that went into the fifo since the beginning
  std::int64_t encoded_ = 0;  // of them, given to the encoder
};

}  // namespace cli
