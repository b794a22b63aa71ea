// How a video asks to be turned when it is shown, as most phones do.
#pragma once

#include <optional>

#include "cli/video/libav.h"
#include "minihost/picture/image.h"

namespace cli {

/// The number of the orientation (see Orientation), 1 when the file asks for nothing; empty when it asks for
/// other than right angles and mirrors.
std::optional<int> OrientationOf(const AVStream& stream);

/// The upright picture of one that is stored in this orientation.
minihost::Image Turn(minihost::Image stored, int orientation);

}  // namespace cli
