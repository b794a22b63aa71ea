#include "cli/video/sink.h"

#include "cli/report/error.h"
#include "cli/video/format.h"

namespace cli {
namespace {

const std::filesystem::path& VideoPath(const std::filesystem::path& path) {
  if (!VideoFormatOf(path)) {
    Refuse(ExitCode::kUsage, "video '{}' must end in .mp4, .mov or .mkv", path.string());
  }
  return path;
}

}  // namespace

VideoSink::VideoSink(const std::filesystem::path& path, const VideoTraits& traits)
    : pending_(VideoPath(path)), encoding_(EncodeVideo(path, pending_.HiddenPath(), traits)) {}

void VideoSink::Finish() {
  encoding_->Finish();
  pending_.Commit();
}

}  // namespace cli
