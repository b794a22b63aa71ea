// What a format of pictures does not hold of what it is given.
#pragma once

#include <string>
#include <vector>

#include "cli/frames/source.h"
#include "cli/picture/format.h"

namespace cli {

/// Of pictures of these traits in files of this format; for the user, one sentence each.
std::vector<std::string> LossesOf(FileFormat format, const SourceTraits& traits);

/// The same in a video.
std::vector<std::string> LossesInVideo(const SourceTraits& traits);

}  // namespace cli
