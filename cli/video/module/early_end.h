// Whether a video ends before it should.
#pragma once

#include <cstdint>
#include <string>

#include "cli/video/module/libav.h"

namespace cli {

/// What came of a stream, in its time base.
struct StreamExtent {
  std::int64_t packets = 0;
  std::int64_t begin = INT64_MAX;
  std::int64_t end = 0;
  std::int64_t lastDuration = 0;  // of the picture shown last; 0 when it is not known
  bool endsInPart = false;        // the last packet is cut off

  void Add(const AVPacket& packet);
};

/// What is missing of a stream that was read to its end, as half a sentence; empty when nothing is.  Some
/// formats end without complaint wherever the file does, but say how long the video was to be, of how many
/// pictures, or how large.
std::string EarlyEnd(const AVFormatContext& file, const AVStream& stream, const StreamExtent& extent);

}  // namespace cli
