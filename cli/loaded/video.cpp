// The tool's side: the reader and the writer are those of the module, which is loaded at their first use.
#include "cli/loaded/module.h"
#include "cli/video/exports.h"

namespace cli {
namespace {

const VideoModule& Module() {
  static const VideoModule& kModule =
      *reinterpret_cast<GetVideoModule*>(FindInModule("video", "videos", kVideoModuleName))();
  return kModule;
}

}  // namespace

std::unique_ptr<VideoSource> OpenVideo(const std::filesystem::path& path, const VideoInput& input) {
  return Module().open(path, input);
}

std::unique_ptr<VideoEncoding> EncodeVideo(const std::filesystem::path& path,
                                           const std::filesystem::path& file, const VideoTraits& traits) {
  return Module().encode(path, file, traits);
}

}  // namespace cli
