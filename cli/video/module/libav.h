// Owners for what the media libraries allocate, and words for what they return.
#pragma once

#include <filesystem>
#include <memory>
#include <new>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
}

namespace cli {

/// Owned by scope: each frees what the libraries allocated for it, or closes its file.
struct FreeLibav {
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
  void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
};
struct CloseInput {
  void operator()(AVFormatContext* file) const { avformat_close_input(&file); }
};
struct FreeOutput {
  void operator()(AVFormatContext* file) const {
    avio_closep(&file->pb);
    avformat_free_context(file);
  }
};

using AvFrame = std::unique_ptr<AVFrame, FreeLibav>;
using AvPacket = std::unique_ptr<AVPacket, FreeLibav>;
using AvCodec = std::unique_ptr<AVCodecContext, FreeLibav>;
using AvInput = std::unique_ptr<AVFormatContext, CloseInput>;
using AvOutput = std::unique_ptr<AVFormatContext, FreeOutput>;

/// Options of muxers and encoders by name.
class AvOptions {
 public:
  AvOptions() = default;
  ~AvOptions() { av_dict_free(&entries_); }
  AvOptions(const AvOptions&) = delete;
  AvOptions& operator=(const AvOptions&) = delete;

  void Set(const char* name, const char* value) {
    if (av_dict_set(&entries_, name, value, 0) < 0) {
      throw std::bad_alloc();
    }
  }
  AVDictionary** Get() { return &entries_; }

 private:
  AVDictionary* entries_ = nullptr;
};

/// What was allocated; throws std::bad_alloc for null, which is how these libraries say "no memory".
template <class T>
T* Allocated(T* thing) {
  if (!thing) {
    throw std::bad_alloc();
  }
  return thing;
}

/// A frame with room for its pixels, which are undefined.
AvFrame AllocateFrame(AVPixelFormat format, int width, int height);

/// So many rows of a planar frame from `first` on, on loan: the frame must outlive them.  `first` begins a
/// block of chroma.
AvFrame RowsOf(const AVFrame& frame, int first, int count);

/// Opens a local file and looks what streams it has.  Returns 0 or more, or the libraries' error.
int OpenInput(const std::filesystem::path& path, AvInput& file);

/// The name under which the libraries find a local file and nothing else: a colon in it names no protocol.
std::string LibavName(const std::filesystem::path& path);

/// Half a sentence for an error that the libraries returned.
std::string LibavMessage(int error);

/// Errors are told in the tool's own messages; the libraries would add theirs on the terminal.
void SilenceLibav();

}  // namespace cli
