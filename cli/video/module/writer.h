// The writer of video files.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/video/format.h"
#include "cli/video/module/color.h"
#include "cli/video/module/libav.h"
#include "cli/video/module/sound.h"
#include "cli/video/sink.h"

namespace cli {

class VideoWriter : public VideoEncoding {
 public:
  /// As EncodeVideo has it.
  VideoWriter(const std::filesystem::path& path, const std::filesystem::path& file,
              const VideoTraits& traits);
  ~VideoWriter() override;

  std::unique_ptr<EncodedFrame> Encode(std::int32_t frame, const minihost::Image& image,
                                       const PictureTraits& traits) const override;
  void Write(std::int32_t frame, std::unique_ptr<EncodedFrame> encoded) override;
  void Finish() override;
  const std::vector<std::string>& Notes() const override { return notes_; }

 private:
  void Check(int error) const;
  void OpenOutput();
  void OpenCodec(const VideoTraits& traits);
  void OpenSound(const FileRange& sound, SoundWish wish);
  void WriteHeader();
  void NoteLosses(const VideoTraits& traits);
  void SendFrame(AVFrame* frame);
  double SecondsWritten() const;

  std::filesystem::path path_;
  std::string fileName_;  // for the libraries
  VideoFormat format_;
  VideoCodec kind_;
  FieldOrder fields_;
  AvOutput file_;
  AvCodec codec_;
  AvPacket packet_;
  AVStream* stream_ = nullptr;
  std::optional<SoundCopy> sound_;
  std::int64_t written_ = 0;  // frames
  std::vector<std::string> notes_;
};

}  // namespace cli
