#include "cli/video/module/libav.h"

extern "C" {
#include <libavutil/error.h>
#include <libavutil/log.h>
#include <libavutil/pixdesc.h>
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

AvFrame RowsOf(const AVFrame& frame, int first, int count) {
  const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
  AvFrame rows(Allocated(av_frame_alloc()));
  rows->format = frame.format;
  rows->width = frame.width;
  rows->height = count;
  for (int plane = 0; plane < 4 && frame.data[plane] != nullptr; ++plane) {
    const bool isChroma = plane == 1 || plane == 2;
    const int row = isChroma ? first >> desc.log2_chroma_h : first;
    rows->linesize[plane] = frame.linesize[plane];
    rows->data[plane] = frame.data[plane] + static_cast<std::ptrdiff_t>(row) * frame.linesize[plane];
  }
  return rows;
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
