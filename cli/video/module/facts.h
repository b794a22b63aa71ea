// What there is to know about a video file, for people and for programs.
#pragma once

#include "cli/video/module/libav.h"
#include "cli/video/source.h"

namespace cli {

/// Of a file and its stream of pictures.  What the file does not say is left out.
Facts FactsOf(const AVFormatContext& file, const AVStream& video, const LightLevels& levels);

}  // namespace cli
