// Frames from pictures: one for all, or one file for each.
#pragma once

#include <filesystem>
#include <map>
#include <vector>

#include "cli/frames/source.h"

namespace cli {

/// The same picture in every frame.
class StillSource : public FrameSource {
 public:
  explicit StillSource(Picture picture);
  const SourceTraits& Traits() const override { return traits_; }
  std::optional<Picture> Read(std::int32_t frame) override;

 private:
  Picture picture_;
  SourceTraits traits_;
};

/// Whether a name has a place for the number of a frame: `plate.####.exr`, `plate.%04d.png`, `plate.@@@.tif`.
bool IsSequenceName(const std::filesystem::path& path);

/// Numbered files.  The place for the number is written as for output (OutputName) or as a run of `@`,
/// one for each digit.
class SequenceSource : public FrameSource {
 public:
  /// Looks which numbers there are; the first file tells size and depth (without `depth`).  Throws
  /// ToolError(kInput) when there is none, and ToolError(kUsage) for more than one place for the number.
  explicit SequenceSource(const std::filesystem::path& pattern, std::optional<minihost::Depth> depth = {});

  const SourceTraits& Traits() const override { return traits_; }

  /// Empty for a number that has no file.  Throws ToolError(kInput) for a picture of another size than the
  /// first one's.
  std::optional<Picture> Read(std::int32_t frame) override;

  std::filesystem::path FileOf(std::int32_t frame) const override;

  /// The frames between the first and the last that have no file, rising.
  std::vector<std::int32_t> Missing() const;

 private:
  std::map<std::int32_t, std::filesystem::path> files_;
  SourceTraits traits_;
  bool isHalf_ = false;  // of the first file
};

}  // namespace cli
