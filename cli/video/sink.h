// Frames into a video file.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "cli/file/pending_file.h"
#include "cli/frames/sink.h"
#include "cli/video/traits.h"

namespace cli {

/// Encodes into a file that is there already, empty.  Writes the same bytes for the same frames, with any
/// number of threads that encode.  Frames have the size that was announced, and follow each other in the file
/// whatever their numbers.
class VideoEncoding : public FrameSink {
 public:
  /// What the video does not hold of what it was given; for the user.
  virtual const std::vector<std::string>& Notes() const = 0;
};

/// H.264 in .mp4, ProRes 4444 in .mov, lossless FFV1 in .mkv, or another codec that was asked for.
///
/// H.264: 8 bits, limited range, 4:2:0, nearly without visible loss, over black where the picture is
/// transparent; HEVC the same, with 10 bits from frames of more than 8.  ProRes: 10 bits, limited range,
/// 4:4:4, straight alpha (stored in 16 bits, of which the encoder fills 10; clear and opaque are exact).
/// FFV1: RGB without loss, straight alpha, 8 bits from 8-bit frames, else 16.
///
/// `path`, one that VideoFormatOf knows, decides and is what messages name; the bytes go to `file`.  Throws
/// ToolError(kUsage) as CodecOf does, and ToolError(kOutput) when the format cannot hold the size (MP4 wants
/// it even) or the file cannot be written.
std::unique_ptr<VideoEncoding> EncodeVideo(const std::filesystem::path& path,
                                           const std::filesystem::path& file, const VideoTraits& traits);

/// The same into a file that appears whole or not at all.
class VideoSink : public FrameSink {
 public:
  /// Throws as EncodeVideo does, and ToolError(kUsage) for other extensions.
  VideoSink(const std::filesystem::path& path, const VideoTraits& traits);

  std::unique_ptr<EncodedFrame> Encode(std::int32_t frame, const minihost::Image& image,
                                       const PictureTraits& traits) const override {
    return encoding_->Encode(frame, image, traits);
  }
  void Write(std::int32_t frame, std::unique_ptr<EncodedFrame> encoded) override {
    encoding_->Write(frame, std::move(encoded));
  }
  void Finish() override;
  const std::vector<std::string>& Notes() const { return encoding_->Notes(); }

 private:
  PendingFile pending_;  // of this side of the module: its signal handlers remove what is left over
  std::unique_ptr<VideoEncoding> encoding_;
};

}  // namespace cli
