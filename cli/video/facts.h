// What there is to know about a video file, for people and for programs.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "cli/video/libav.h"

namespace cli {

/// Names in small letters with blanks, and what they stand for; in the order in which they are told.
using Facts = std::vector<std::pair<std::string, std::string>>;

/// Of a file and its stream of pictures.  What the file does not say is left out.
Facts FactsOf(const AVFormatContext& file, const AVStream& video);

}  // namespace cli
