// The module's side.
#include "cli/video/exports.h"

extern "C" [[gnu::visibility("default")]] const cli::VideoModule* VintrelVideos();

const cli::VideoModule* VintrelVideos() {
  static constexpr cli::VideoModule kModule{&cli::OpenVideo, &cli::EncodeVideo};
  return &kModule;
}
