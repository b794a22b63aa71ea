// Frames of a video file.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "cli/frames/orientation.h"
#include "cli/frames/source.h"
#include "cli/video/color.h"
#include "cli/video/decoder.h"
#include "cli/video/facts.h"
#include "cli/video/sound.h"

namespace cli {

/// Reads any file that the media libraries know.
///
/// Pictures are upright: turned and mirrored as the file asks.  Frame n is the n-th picture in the order of
/// showing, from 0; with a varying rate it is the picture whose time is nearest to that of the n-th frame at
/// the mean rate.
class VideoReader : public FrameSource {
 public:
  /// Without `depth` the file decides (DepthOf).  With `retimed` frame n is the picture that is shown n
  /// frames of that rate after the first, and the video lasts as long as it did.  Throws ToolError(kInput)
  /// naming the file.
  explicit VideoReader(const std::filesystem::path& path, std::optional<minihost::Depth> depth = {},
                       AlphaForm alpha = AlphaForm::kStraight, std::optional<FrameRate> retimed = {});

  const SourceTraits& Traits() const override { return traits_; }

  /// Throws ToolError(kInput) naming the file and the frame when the picture is damaged; other frames can be
  /// read after that.
  std::optional<Picture> Read(std::int32_t frame) override;

  /// "breaks off after 4 pictures: ...".
  std::string Damage() const override;

  /// What to write into a video made from this one.  With luma and chroma the matrix is always a known one.
  const ColorTags& Tags() const { return tags_; }

  /// What was assumed where the file says nothing, and what of it is ignored; for the user.
  const std::vector<std::string>& Notes() const { return notes_; }

  /// The stretch of the file in which these frames are shown.
  SoundRange Range(std::int32_t first, std::int32_t last) const;

  /// The sound that belongs to the frames `first`..`last`; empty when the file has none.
  std::optional<SoundRange> Sound(std::int32_t first, std::int32_t last) const;

  /// What the file says about itself.
  Facts About() const { return FactsOf(decoder_.File(), decoder_.Stream()); }

  bool HasVaryingRate() const { return !decoder_.Index().IsConstantRate(); }

  /// Whether the file is one picture in a format for such.
  bool IsStill() const;

 private:
  void FillTraits(std::optional<minihost::Depth> depth);
  void ChooseCoding(AVPixelFormat format);
  void NoteWhatIsIgnored();

  std::filesystem::path path_;
  AlphaForm alpha_;
  VideoDecoder decoder_;
  Orientation::Size stored_{};      // of a frame in the file
  std::optional<int> orientation_;  // empty: one that is ignored
  SourceTraits traits_;
  ColorTags tags_;
  YuvCoding coding_;
  std::vector<std::string> notes_;
};

}  // namespace cli
