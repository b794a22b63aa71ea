// Frames into a video file: H.264 in .mp4, ProRes 4444 in .mov, lossless FFV1 in .mkv, or another codec
// that was asked for.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/file/pending_file.h"
#include "cli/frames/sink.h"
#include "cli/scene/frame_rate.h"
#include "cli/video/color.h"
#include "cli/video/libav.h"
#include "cli/video/sound.h"

namespace cli {

enum class VideoFormat { kMp4, kMov, kMkv };
enum class VideoCodec { kH264, kHevc, kProres, kFfv1 };

/// The format that the extension stands for, upper or lower case; empty for others.
std::optional<VideoFormat> VideoFormatOf(const std::filesystem::path& path);

/// The codec that settings ask for, else the format's own.  Throws ToolError(kUsage) for a codec that is not
/// known or that the format does not take, and for a quality beyond the codec's scale: 0 to 51 of H.264 and
/// HEVC (their CRF), 1 to 31 of ProRes (its quantizer); less is better.  FFV1 is without loss and has none.
VideoCodec CodecOf(VideoFormat format, const EncodingSettings& settings);

/// What a video needs to know before its first frame.
struct VideoTraits {
  int width = 0;  // pixels
  int height = 0;
  minihost::Depth depth = minihost::Depth::kBits8;
  bool hasAlpha = false;
  double pixelAspect = 1;
  FrameRate rate;
  ColorTags tags{};                     // of the source; what is unspecified is chosen by the height
  std::optional<SoundRange> sound{};    // of the source
  std::optional<SoundRange> carried{};  // of what the frames are; for the rest that goes along
  EncodingSettings encoding{};
};

/// Writes the same bytes for the same frames, with any number of threads that encode.
///
/// H.264: 8 bits, limited range, 4:2:0, nearly without visible loss, over black where the picture is
/// transparent; HEVC the same, with 10 bits from frames of more than 8.  ProRes: 10 bits, limited range,
/// 4:4:4, straight alpha (stored in 16 bits, of which the encoder fills 10; clear and opaque are exact).
/// FFV1: RGB without loss, straight alpha, 8 bits from 8-bit frames, else 16.
class VideoWriter : public FrameSink {
 public:
  /// Throws ToolError(kUsage) for other extensions and ToolError(kOutput), naming the file, when the format
  /// cannot hold the size (MP4 wants it even) or the file cannot be written.
  VideoWriter(const std::filesystem::path& path, const VideoTraits& traits);
  ~VideoWriter() override;

  /// Frames have the size that was announced.
  std::unique_ptr<EncodedFrame> Encode(std::int32_t frame, const minihost::Image& image,
                                       const PictureTraits& traits) const override;

  /// Frames follow each other in the file whatever their numbers.
  void Write(std::int32_t frame, std::unique_ptr<EncodedFrame> encoded) override;
  void Finish() override;

  /// What the video does not hold of what it was given; for the user.
  const std::vector<std::string>& Notes() const { return notes_; }

 private:
  void Check(int error) const;
  void OpenOutput();
  void OpenCodec(const VideoTraits& traits);
  int TryCodec(const AVCodec& encoder, const VideoTraits& traits, int rowsOfSlices);
  void OpenSound(const SoundRange& sound, SoundWish wish);
  void WriteHeader();
  void NoteLosses(const VideoTraits& traits);
  void SendFrame(AVFrame* frame);
  double SecondsWritten() const;

  std::filesystem::path path_;
  VideoFormat format_;
  VideoCodec kind_;
  PendingFile pending_;
  AvOutput file_;
  AvCodec codec_;
  AvPacket packet_;
  AVStream* stream_ = nullptr;
  std::optional<SoundCopy> sound_;
  std::int64_t written_ = 0;  // frames
  std::vector<std::string> notes_;
};

}  // namespace cli
