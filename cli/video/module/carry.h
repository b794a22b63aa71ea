// What goes along with the pictures from one video to another: title, chapters, timecode.
#pragma once

#include <string>
#include <vector>

#include "cli/video/module/libav.h"
#include "cli/video/traits.h"

namespace cli {

/// The timecode of the first picture, wherever the file has it: with the pictures, on a track of its own or
/// for the whole; on loan, null when there is none.
const char* TimecodeOf(const AVFormatContext& file, const AVStream& video);

/// Copies what belongs to the frames of `source` to `output` and to `video`, its stream of pictures, whose
/// rate is known; the header is not yet written.  Chapters are cut to the range, and the timecode is that of
/// its first frame; both are left out where frames are.  Returns notes on what is left out.  Throws
/// ToolError(kInput) when the file cannot be read.
std::vector<std::string> CarryOver(const CarriedFile& source, AVFormatContext& output, AVStream& video);

}  // namespace cli
