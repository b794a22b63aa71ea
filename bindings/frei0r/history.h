// The values that a parameter has been seen with, frame by frame: this standard has no keyframes.
#pragma once

#include <cstdint>
#include <map>

#include "minihost/parameter/track.h"

namespace frei0r {

/// A host that animates a parameter sets its value of now before every frame.  What has been seen becomes a
/// track, so that the motion integrates it.  Frames between two that were seen lie on the line between them
/// (a host with several threads shows each instance some of the frames only), frames before all that were
/// seen have the first value, frames after them the last.  So while the value never changes the track is
/// constant, whatever was seen and in which order.
class History {
 public:
  enum class Change {
    kNone,    // the track is as it was
    kTrack,   // the track has another value from here on
    kEdited,  // the frame had another value before: what was seen counts no more, and neither do sums of it
  };

  /// The value at a frame.
  Change See(std::int32_t frame, const minihost::Value& value);

  /// Of what has been seen, which is something.
  minihost::Track Seen() const;

 private:
  /// The frames from the key to `last`, each seen with this value.
  struct Run {
    std::int32_t last;
    minihost::Value value;
  };

  Change SeeNew(std::int32_t frame, const minihost::Value& value);
  bool IsConstant() const;

  std::map<std::int32_t, Run> runs_;  // by first frame; none overlap
};

}  // namespace frei0r
