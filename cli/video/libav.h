// Owners for what the media libraries allocate, and words for what they return.
#pragma once

#include <memory>
#include <new>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/error.h>
#include <libavutil/log.h>
}

namespace cli {

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

/// What was allocated; throws std::bad_alloc for null, which is how these libraries say "no memory".
template <class T>
T* Allocated(T* thing) {
  if (!thing) {
    throw std::bad_alloc();
  }
  return thing;
}

/// A frame with room for its pixels, which are undefined.
inline AvFrame AllocateFrame(AVPixelFormat format, int width, int height) {
  AvFrame frame(Allocated(av_frame_alloc()));
  frame->format = format;
  frame->width = width;
  frame->height = height;
  if (av_frame_get_buffer(frame.get(), 0) < 0) {
    throw std::bad_alloc();
  }
  return frame;
}

inline std::string LibavMessage(int error) {
  char text[AV_ERROR_MAX_STRING_SIZE] = {};
  av_strerror(error, text, sizeof text);
  return text;
}

/// The name under which the libraries find a local file and nothing else: a colon in it names no protocol.
inline std::string LibavName(const std::string& path) {
  return "file:" + path;
}

/// Errors are told in the tool's own messages; the libraries would add theirs on the terminal.
inline void SilenceLibav() {
  av_log_set_level(AV_LOG_QUIET);
}

}  // namespace cli
