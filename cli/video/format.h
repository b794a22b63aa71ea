// Which files are videos, and how their pictures are encoded.
#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "cli/scene/settings.h"

namespace cli {

enum class VideoFormat { kMp4, kMov, kMkv };
enum class VideoCodec { kH264, kHevc, kProres, kFfv1 };

/// The format that the extension stands for, upper or lower case; empty for others.
std::optional<VideoFormat> VideoFormatOf(const std::filesystem::path& path);

/// The codec that settings ask for, else the format's own.  Throws ToolError(kUsage) for a codec that is not
/// known or that the format does not take, and for a quality beyond the codec's scale: 0 to 51 of H.264 and
/// HEVC (their CRF), 1 to 31 of ProRes (its quantizer); less is better.  FFV1 is without loss and has none.
VideoCodec CodecOf(VideoFormat format, const EncodingSettings& settings);

/// As settings name it.
std::string_view NameOfCodec(VideoCodec codec);

}  // namespace cli
