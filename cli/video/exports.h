// What the module of videos exports: the reader and the writer, with the libraries that they need.
#pragma once

#include "cli/video/sink.h"
#include "cli/video/source.h"

namespace cli {

struct VideoModule {
  decltype(&OpenVideo) open;
  decltype(&EncodeVideo) encode;
};

/// The one name that the module exports.
inline constexpr char kVideoModuleName[] = "VintrelVideos";
using GetVideoModule = const VideoModule*();

}  // namespace cli
