// The reader of video files.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "cli/frames/orientation.h"
#include "cli/video/module/color.h"
#include "cli/video/module/decoder.h"
#include "cli/video/source.h"

namespace cli {

class VideoReader : public VideoSource {
 public:
  /// Without a depth the file decides (DepthOf).  Retimed, the video lasts as long as it did.  Throws
  /// ToolError(kInput) naming the file.
  explicit VideoReader(const std::filesystem::path& path, const VideoInput& input = {});

  const SourceTraits& Traits() const override { return traits_; }
  std::optional<Picture> Read(std::int32_t frame) override;

  /// "breaks off after 4 pictures: ...".
  std::string Damage() const override;

  const ColorTags& Tags() const override { return tags_; }
  const std::vector<std::string>& Notes() const override { return notes_; }
  int Bits() const override;
  FieldOrder Fields() const override;
  const LightLevels& Levels() const override { return levels_; }
  FileRange Range(std::int32_t first, std::int32_t last) const override;
  std::optional<FileRange> Sound(std::int32_t first, std::int32_t last) const override;
  Facts About() const override;
  bool HasVaryingRate() const override { return !decoder_.Index().IsConstantRate(); }
  bool IsStill() const override;

 private:
  void FillTraits(std::optional<minihost::Depth> depth);
  void ChooseCoding(AVPixelFormat format);
  void ReadLightLevels();
  void NoteWhatIsIgnored();

  std::filesystem::path path_;
  AlphaForm alpha_;
  VideoDecoder decoder_;
  Orientation::Size stored_{};      // of a frame in the file
  std::optional<int> orientation_;  // empty: one that is ignored
  SourceTraits traits_;
  ColorTags tags_;
  LightLevels levels_;
  YuvCoding coding_;
  std::vector<std::string> notes_;
};

}  // namespace cli
