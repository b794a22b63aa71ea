// Decodes any picture of a video file by its number.
#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <stdexcept>

#include "cli/video/module/index.h"
#include "cli/video/module/libav.h"

namespace cli {

/// One picture cannot be decoded; the message is the reason.
struct DecodeFailure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The best video stream of one file.  Rising numbers decode each picture once; falling ones go back to the
/// nearest picture that stands alone.
class VideoDecoder {
 public:
  /// Reads through the file for its index.  Throws ToolError(kInput) naming the file.
  explicit VideoDecoder(const std::filesystem::path& path);

  /// On loan; Decode may open the file again, so that both are asked for anew after it.
  AVFormatContext& File() const { return *file_; }
  AVStream& Stream() const { return *file_->streams[stream_]; }

  const VideoIndex& Index() const { return *index_; }

  void Retime(FrameRate rate) { index_->Retime(rate); }

  /// The picture, on loan until the next call; `picture` is below the index's count.  Throws DecodeFailure;
  /// other pictures can be decoded after that.
  const AVFrame& Decode(std::size_t picture);

 private:
  void Open();
  void OpenCodec();
  void CutUndecodableEnd();
  void Rewind();
  void SeekTo(std::size_t picture);
  void StartNear(std::size_t picture);
  bool Reach(std::size_t picture);
  bool Advance();
  void SendPacket();
  std::optional<std::size_t> PositionOfFrame();

  std::filesystem::path path_;
  AvInput file_;
  AvCodec codec_;
  AvPacket packet_;
  AvFrame frame_;
  int stream_ = -1;
  std::optional<VideoIndex> index_;
  std::set<std::int64_t> damaged_;       // times of packets that are known to be
  std::optional<std::size_t> position_;  // of the picture in frame_; empty when none is there
  std::size_t decoded_ = 0;              // pictures since the start, for files without times
  bool fromStart_ = false;               // whether all since the start of the file went through the decoder
};

}  // namespace cli
