// What is said of a video on its way from one file to another.
#pragma once

#include <filesystem>
#include <optional>

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
};

}  // namespace cli
