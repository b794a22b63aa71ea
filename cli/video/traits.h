// What is said of a video on its way from one file to another.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "cli/scene/frame_rate.h"
#include "cli/scene/settings.h"
#include "minihost/picture/image.h"

namespace cli {

/// What a video says about the meaning of its colour, in the numbers of ITU-T H.273.
struct ColorTags {
  static constexpr int kUnspecified = 2;
  int matrix = kUnspecified;
  int primaries = kUnspecified;
  int transfer = kUnspecified;
};

/// A stretch of a file, in seconds on the file's clock.
struct FileRange {
  std::filesystem::path path;
  double begin = 0;
  double end = 0;
};

/// What the frames of a video are made of, so that what belongs to them can go along.
struct CarriedFile {
  FileRange range;       // from the first frame to the last
  bool hasGaps = false;  // whether frames are left out between: nothing that belongs to a moment goes along
};

/// Which lines of an interlaced frame are shown first.
enum class FieldOrder { kProgressive, kTopFirst, kBottomFirst };

/// How light the display was on which an HDR video was made, and how light it gets: records of the media
/// libraries as bytes; empty for what is not known.
struct LightLevels {
  std::vector<std::uint8_t> display;
  std::vector<std::uint8_t> content;
};

/// What a video needs to know before its first frame.
struct VideoTraits {
  int width = 0;  // pixels
  int height = 0;
  minihost::Depth depth = minihost::Depth::kBits8;
  bool hasAlpha = false;
  double pixelAspect = 1;
  FrameRate rate;
  ColorTags tags{};                  // of the source; what is unspecified is chosen by the height
  std::optional<FileRange> sound{};  // of the source
  std::optional<CarriedFile> carried{};
  EncodingSettings encoding{};
  int sourceBits = 0;  // of a sample in the source; 0 when there is none
  FieldOrder fields = FieldOrder::kProgressive;
  LightLevels levels{};  // of the source
};

}  // namespace cli
