// Frames of a video file.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/frames/source.h"
#include "cli/video/traits.h"

namespace cli {

/// Names in small letters with blanks, and what they stand for; in the order in which they are told.
using Facts = std::vector<std::pair<std::string, std::string>>;

/// Any file that the media libraries know.
///
/// Pictures are upright: turned and mirrored as the file asks.  Frame n is the n-th picture in the order of
/// showing, from 0; with a varying rate it is the picture whose time is nearest to that of the n-th frame at
/// the mean rate.  A damaged picture fails with the file and the frame in the message; other frames can be
/// read after that.
class VideoSource : public FrameSource {
 public:
  /// What to write into a video made from this one.  With luma and chroma the matrix is always a known one.
  virtual const ColorTags& Tags() const = 0;

  /// What was assumed where the file says nothing, and what of it is ignored; for the user.
  virtual const std::vector<std::string>& Notes() const = 0;

  /// The most bits that a sample of the file has.
  virtual int Bits() const = 0;

  /// Of the pictures as they are read: turned to the side they have no fields any more.
  virtual FieldOrder Fields() const = 0;

  virtual const LightLevels& Levels() const = 0;

  /// The stretch of the file in which these frames are shown.
  virtual FileRange Range(std::int32_t first, std::int32_t last) const = 0;

  /// The stretch of the sound that belongs to the frames `first`..`last`; empty when the file has none.
  virtual std::optional<FileRange> Sound(std::int32_t first, std::int32_t last) const = 0;

  /// What the file says about itself.
  virtual Facts About() const = 0;

  virtual bool HasVaryingRate() const = 0;

  /// Whether the file is one picture in a format for such.
  virtual bool IsStill() const = 0;
};

/// How a video is read; empty: as the file has it.
struct VideoInput {
  std::optional<minihost::Depth> depth{};
  AlphaForm alpha = AlphaForm::kStraight;
  std::optional<FrameRate> retimed{};  // frame n is the picture shown n frames of this rate after the first
};

/// Throws ToolError(kInput) naming the file.
std::unique_ptr<VideoSource> OpenVideo(const std::filesystem::path& path, const VideoInput& input);

}  // namespace cli
