// The encoders of video: which one a codec has, and how it is told to encode.
#pragma once

#include <filesystem>

#include "cli/video/format.h"
#include "cli/video/module/libav.h"
#include "cli/video/traits.h"

namespace cli {

/// Whether the codec's pictures are stored in 4:2:0 here, without alpha and with an even width and height.
bool IsSubsampled(VideoCodec codec);

/// An encoder that awaits frames of these traits, in the pixel format and colour that its context names.  Its
/// options follow the traits alone, not the machine, so that the same frames give the same bytes anywhere.
/// Throws ToolError(kOutput), which names `path`, when there is none or it does not take the frames' size or
/// rate.
AvCodec OpenEncoder(VideoCodec codec, const VideoTraits& traits, const AVOutputFormat& container,
                    const std::filesystem::path& path);

}  // namespace cli
