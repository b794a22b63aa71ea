#include "cli/video/format.h"

#include <algorithm>
#include <string>

#include "cli/file/extension.h"
#include "cli/report/choice.h"
#include "cli/report/error.h"

namespace cli {
namespace {

constexpr Choices<VideoCodec, 4> kCodecs = {{VideoCodec::kH264, "h264"},
                                            {VideoCodec::kHevc, "hevc"},
                                            {VideoCodec::kProres, "prores"},
                                            {VideoCodec::kFfv1, "ffv1"}};

struct FormatFacts {
  const char* extension;
  VideoCodec ownCodec;
};

constexpr FormatFacts FactsOf(VideoFormat format) {
  switch (format) {
    case VideoFormat::kMp4:
      return {".mp4", VideoCodec::kH264};
    case VideoFormat::kMov:
      return {".mov", VideoCodec::kProres};
    case VideoFormat::kMkv:
      break;
  }
  return {".mkv", VideoCodec::kFfv1};
}

/// Refuses names that others give to the same, with the one here.
VideoCodec ParseCodec(std::string_view name) {
  constexpr Choices<VideoCodec, 4> kOthers = {{VideoCodec::kH264, "264"},
                                              {VideoCodec::kH264, "avc"},
                                              {VideoCodec::kHevc, "265"},
                                              {VideoCodec::kProres, "prores"}};
  const auto isName = [&](const auto& choice) { return choice.second == name; };
  for (const auto& [codec, part] : kOthers) {
    if (std::ranges::none_of(kCodecs, isName) && name.find(part) != std::string_view::npos) {
      Refuse(ExitCode::kUsage, "codec '{}' has another name here: {}", name, NameOfCodec(codec));
    }
  }
  return About("codec", [&] { return ParseChoice(kCodecs, name); });
}

bool Takes(VideoFormat format, VideoCodec codec) {
  switch (codec) {
    case VideoCodec::kH264:
    case VideoCodec::kHevc:
      return true;
    case VideoCodec::kProres:
      return format != VideoFormat::kMp4;
    case VideoCodec::kFfv1:
      break;
  }
  return format == VideoFormat::kMkv;
}

void CheckQuality(VideoCodec codec, int quality) {
  if (codec == VideoCodec::kFfv1) {
    Refuse(ExitCode::kUsage, "quality {}: ffv1 is without loss and has no scale of quality", quality);
  }
  const int least = codec == VideoCodec::kProres ? 1 : 0;
  const int most = codec == VideoCodec::kProres ? 31 : 51;
  if (quality < least || quality > most) {
    Refuse(ExitCode::kUsage, "quality {} is not on the scale of {}, {} (best) to {}", quality,
           NameOfCodec(codec), least, most);
  }
}

}  // namespace

std::string_view NameOfCodec(VideoCodec codec) {
  return NameOf(kCodecs, codec);
}

VideoCodec CodecOf(VideoFormat format, const EncodingSettings& settings) {
  const auto [extension, ownCodec] = FactsOf(format);
  const VideoCodec codec = settings.codec.empty() ? ownCodec : ParseCodec(settings.codec);
  if (!Takes(format, codec)) {
    Refuse(ExitCode::kUsage, "codec '{}' does not go into {}; write {}", settings.codec, extension,
           codec == VideoCodec::kProres ? ".mov or .mkv" : ".mkv");
  }
  if (settings.quality) {
    CheckQuality(codec, *settings.quality);
  }
  return codec;
}

// Of one shape with PictureFormatOf on purpose: the two rooms do not know of each other.
std::optional<VideoFormat> VideoFormatOf(const std::filesystem::path& path) {
  const std::string extension = LowerExtension(path);
  if (extension == ".mp4") {
    return VideoFormat::kMp4;
  }
  if (extension == ".mov") {
    return VideoFormat::kMov;
  }
  if (extension == ".mkv") {
    return VideoFormat::kMkv;
  }
  return {};
}

}  // namespace cli
