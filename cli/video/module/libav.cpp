#include "cli/video/module/libav.h"

extern "C" {
#include <libavutil/error.h>
#include <libavutil/log.h>
}

namespace cli {

AvFrame AllocateFrame(AVPixelFormat format, int width, int height) {
  AvFrame frame(Allocated(av_frame_alloc()));
  frame->format = format;
  frame->width = width;
  frame->height = height;
  if (av_frame_get_buffer(frame.get(), 0) < 0) {
    throw std::bad_alloc();
  }
  return frame;
}

int OpenInput(const std::filesystem::path& path, AvInput& file) {
  AVFormatContext* opened = nullptr;
  const int error = avformat_open_input(&opened, LibavName(path).c_str(), nullptr, nullptr);
  file.reset(opened);
  return error < 0 ? error : avformat_find_stream_info(opened, nullptr);
}

std::string LibavName(const std::filesystem::path& path) {
  return "file:" + path.string();
}

std::string LibavMessage(int error) {
  char text[AV_ERROR_MAX_STRING_SIZE] = {};
  av_strerror(error, text, sizeof text);
  return text;
}

void SilenceLibav() {
  av_log_set_level(AV_LOG_QUIET);
}

}  // namespace cli
