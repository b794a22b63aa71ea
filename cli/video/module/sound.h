// The sound of a video, carried over from file to file: as it is, or encoded anew.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cli/scene/settings.h"
#include "cli/video/module/aac.h"
#include "cli/video/module/libav.h"
#include "cli/video/traits.h"

namespace cli {

/// Copies packets of all sound streams to an output of which the frame at `range.begin` is the first.
class SoundCopy {
 public:
  /// Adds streams to `output`, which has no header yet and outlives this. Throws ToolError(kInput) when the
  /// file cannot be read, and ToolError(kOutput) when `wish` is to copy and the output cannot hold it.
  SoundCopy(const FileRange& range, AVFormatContext& output, SoundWish wish = SoundWish::kAuto);

  /// Writes what begins before `seconds`, counted from the start of the range. Returns 0 or the libraries'
  /// error of the output.
  int CopyUntil(double seconds);

  /// After all was copied.  Returns the same.
  int Finish();

  /// Of streams that the output cannot hold as they are.
  const std::vector<std::string>& Notes() const { return notes_; }

 private:
  struct Track {
    int output = -1;                      // the index of the stream there; -1 is left out
    std::int64_t begin = 0;               // in the input's time base
    std::int64_t padding = 0;             // what decoders throw away at the start of the stream
    std::unique_ptr<AacTrack> encoded{};  // null: copied
  };

  std::string NameOf(const AVStream& track) const;
  void AddEncoded(const AVStream& input, Track& track);
  void AddTrack(const AVStream& input);
  bool Fetch();
  int Send();

  FileRange range_;
  SoundWish wish_;
  AVFormatContext& output_;
  AvInput input_;
  std::vector<Track> tracks_;  // by the index of the stream in the input
  AvPacket next_;
  bool hasNext_ = false;
  bool atEnd_ = false;
  std::vector<std::string> notes_;
};

}  // namespace cli
