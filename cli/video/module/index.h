// Which pictures a video holds, and when each is shown: what frame numbers stand for.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/scene/frame_rate.h"
#include "cli/video/module/libav.h"

namespace cli {

/// The pictures of one stream in the order in which they are shown, counted from 0, and frames at a constant
/// rate, counted from 0 too.  At a constant rate both are the same; else a frame is the picture whose time is
/// nearest to the frame's.
class VideoIndex {
 public:
  /// Reads through the file once, without decoding.  What cannot be shown is left out: pictures before the
  /// first that stands alone, and those that the file says to skip.  Leaves the file anywhere: open it anew.
  VideoIndex(AVFormatContext& file, const AVStream& stream);

  std::size_t PictureCount() const { return count_; }
  std::int64_t FrameCount() const { return frameCount_; }
  FrameRate Rate() const { return {rate_.num, rate_.den}; }
  bool IsConstantRate() const { return constant_; }

  /// From now on a frame of `rate` is the picture that is shown when it begins.
  void Retime(FrameRate rate);
  bool IsRetimed() const { return retimed_; }

  /// When the first frame begins on the file's clock, in seconds.
  double StartSeconds() const;

  /// The picture shown in a frame of 0..FrameCount()-1.
  std::size_t PictureAt(std::int64_t frame) const;

  /// Whether the file gives its pictures times.  Without, they can only be counted from the start.
  bool HasTimes() const { return !times_.empty(); }

  /// The picture that is shown at `time`, in the stream's time base, or, when there is none, next after it.
  std::size_t PictureAtTime(std::int64_t time) const;

  /// The last picture up to this one that can be decoded without any before it.
  std::size_t KeyBefore(std::size_t picture) const;

  /// When a picture is shown, in the stream's time base; only where HasTimes.
  std::int64_t TimeOf(std::size_t picture) const { return times_[picture]; }

  /// Leaves out a picture and those after it.
  void EndBefore(std::size_t picture);

  /// Why the file ends where it does; empty when by its own will.
  const std::string& Damage() const { return damage_; }

 private:
  std::size_t PictureShownAt(std::int64_t frame) const;
  void Gather(AVFormatContext& file, const AVStream& stream);
  void CutAtLateGap();
  void CountFrames();
  void FindRate(AVFormatContext& file, const AVStream& stream);

  AVRational timeBase_{};
  AVRational rate_{25, 1};
  bool constant_ = true;
  std::size_t count_ = 0;
  std::int64_t frameCount_ = 0;
  bool retimed_ = false;
  AVRational ownRate_{25, 1};        // before it was retimed
  std::vector<std::int64_t> times_;  // rising, in the stream's time base
  std::vector<std::int64_t> keys_;   // the times of pictures that stand alone, rising
  std::string damage_;
};

}  // namespace cli
