#include "cli/video/module/index.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>

#include "cli/video/module/early_end.h"

namespace cli {
namespace {

/// VP8 has packets that only prepare later pictures; everything else shows one picture for one packet.
bool IsShown(const AVPacket& packet, AVCodecID codec) {
  if (packet.flags & AV_PKT_FLAG_DISCARD) {
    return false;
  }
  constexpr int kVp8Shown = 0x10;
  return codec != AV_CODEC_ID_VP8 || packet.size == 0 || (packet.data[0] & kVp8Shown);
}

double PerSecond(AVRational rate) {
  return rate.den > 0 ? av_q2d(rate) : 0;
}

bool IsUsable(AVRational rate) {
  return PerSecond(rate) >= 0.01 && PerSecond(rate) <= 1000;
}

}  // namespace

VideoIndex::VideoIndex(AVFormatContext& file, const AVStream& stream) : timeBase_(stream.time_base) {
  Gather(file, stream);
  FindRate(file, stream);
  CountFrames();
}

void VideoIndex::Gather(AVFormatContext& file, const AVStream& stream) {
  const AvPacket packet(Allocated(av_packet_alloc()));
  bool hasTimes = true;
  StreamExtent extent;
  int error = 0;
  while ((error = av_read_frame(&file, packet.get())) >= 0) {
    if (packet->stream_index == stream.index) {
      const bool isKey = (packet->flags & AV_PKT_FLAG_KEY) != 0;
      hasTimes = hasTimes && packet->pts != AV_NOPTS_VALUE;
      if (isKey) {
        keys_.push_back(packet->pts);
      }
      extent.Add(*packet);
      if (IsShown(*packet, stream.codecpar->codec_id)) {
        times_.push_back(packet->pts);
      }
    }
    av_packet_unref(packet.get());
  }
  if (error != AVERROR_EOF) {
    damage_ = LibavMessage(error);
  }
  if (error == AVERROR_EOF && hasTimes && !times_.empty()) {
    damage_ = EarlyEnd(file, stream, extent);
  }
  count_ = times_.size();
  if (!hasTimes) {
    times_.clear();
    keys_.clear();
    return;
  }
  std::ranges::sort(times_);
  std::ranges::sort(keys_);
  if (!keys_.empty()) {
    times_.erase(times_.begin(), std::ranges::lower_bound(times_, keys_.front()));
  }
  times_.erase(std::unique(times_.begin(), times_.end()), times_.end());
  if (!damage_.empty() && stream.codecpar->video_delay > 0) {
    CutAtLateGap();
  }
  count_ = times_.size();
}

/// Pictures are stored before those that are shown before them and built on them.  Where the file breaks off
/// between, the first have come without the others; a hole in time is no varying rate.
void VideoIndex::CutAtLateGap() {
  constexpr std::ptrdiff_t kMostReordered = 16;  // pictures, in any codec
  constexpr int kFewest = 3;
  if (times_.size() < kFewest) {
    return;
  }
  std::vector<std::int64_t> gaps(times_.size());
  std::adjacent_difference(times_.begin(), times_.end(), gaps.begin());
  gaps.erase(gaps.begin());
  const std::ptrdiff_t first = std::max(std::ssize(gaps) - kMostReordered, std::ptrdiff_t{0});
  std::vector<std::int64_t> ordered = gaps;
  std::ranges::sort(ordered);
  const std::int64_t usual = ordered[ordered.size() / 2];
  const auto hole =
      std::find_if(gaps.begin() + first, gaps.end(), [&](std::int64_t gap) { return 2 * gap > 3 * usual; });
  times_.resize(static_cast<std::size_t>(hole - gaps.begin()) + 1);
}

void VideoIndex::FindRate(AVFormatContext& file, const AVStream& stream) {
  const AVRational guess = av_guess_frame_rate(&file, const_cast<AVStream*>(&stream), nullptr);
  if (IsUsable(guess)) {
    rate_ = guess;
  }
  if (times_.size() > 1) {
    const auto gaps = static_cast<double>(times_.size() - 1);
    const double mean = static_cast<double>(times_.back() - times_.front()) / gaps;
    // Times are rounded to ticks, and a little jitter is not another rate.
    const double tolerance = std::max(1.0, mean / 4);
    constant_ = std::adjacent_find(times_.begin(), times_.end(), [&](std::int64_t a, std::int64_t b) {
                  return std::abs(static_cast<double>(b - a) - mean) > tolerance;
                }) == times_.end();
    const double measured = 1 / (mean * av_q2d(timeBase_));
    constexpr double kTrusted = 0.01;  // how far the file may be off about its own rate
    if (constant_ && std::abs(av_q2d(rate_) / measured - 1) > kTrusted) {
      constexpr int kMost = 60'000;
      const AVRational exact = av_d2q(measured, kMost);
      if (IsUsable(exact)) {
        rate_ = exact;
      }
    }
    if (!constant_) {
      if (IsUsable(stream.avg_frame_rate)) {
        rate_ = stream.avg_frame_rate;
      }
    }
  }
  av_reduce(&rate_.num, &rate_.den, rate_.num, rate_.den, INT32_MAX);
}

void VideoIndex::CountFrames() {
  frameCount_ = static_cast<std::int64_t>(count_);
  if (!constant_ && count_ > 0) {
    const double seconds = static_cast<double>(times_.back() - times_.front()) * av_q2d(timeBase_);
    frameCount_ = std::llround(seconds * av_q2d(rate_)) + 1;
  }
}

void VideoIndex::EndBefore(std::size_t picture) {
  times_.resize(std::min(times_.size(), picture));
  count_ = picture;
  CountFrames();
}

void VideoIndex::Retime(FrameRate rate) {
  ownRate_ = rate_;
  rate_ = {rate.timeScale, rate.timeStep};
  retimed_ = true;
  double seconds = static_cast<double>(count_) / av_q2d(ownRate_);
  if (!constant_ && HasTimes()) {
    // The last picture is shown as long as the others are in the mean.
    seconds = static_cast<double>(times_.back() - times_.front()) * av_q2d(timeBase_) + 1 / av_q2d(ownRate_);
  }
  frameCount_ = std::max<std::int64_t>(1, std::llround(seconds * av_q2d(rate_)));
}

double VideoIndex::StartSeconds() const {
  return times_.empty() ? 0 : static_cast<double>(times_.front()) * av_q2d(timeBase_);
}

std::size_t VideoIndex::PictureAt(std::int64_t frame) const {
  if (retimed_) {
    return PictureShownAt(frame);
  }
  if (constant_) {
    return static_cast<std::size_t>(frame);
  }
  const std::int64_t time = times_.front() + av_rescale_q(frame, av_inv_q(rate_), timeBase_);
  const std::size_t after = std::min(PictureAtTime(time), count_ - 1);
  if (after == 0) {
    return 0;
  }
  return time - times_[after - 1] <= times_[after] - time ? after - 1 : after;
}

std::size_t VideoIndex::PictureShownAt(std::int64_t frame) const {
  if (constant_) {
    const std::int64_t picture = av_rescale_q_rnd(frame, av_inv_q(rate_), av_inv_q(ownRate_), AV_ROUND_DOWN);
    return std::min(static_cast<std::size_t>(picture), count_ - 1);
  }
  const std::int64_t time = times_.front() + av_rescale_q(frame, av_inv_q(rate_), timeBase_);
  return static_cast<std::size_t>(std::ranges::upper_bound(times_, time) - times_.begin()) - 1;
}

std::size_t VideoIndex::PictureAtTime(std::int64_t time) const {
  return static_cast<std::size_t>(std::ranges::lower_bound(times_, time) - times_.begin());
}

std::size_t VideoIndex::KeyBefore(std::size_t picture) const {
  if (times_.empty()) {
    return 0;
  }
  const auto after = std::ranges::upper_bound(keys_, times_[picture]);
  return after == keys_.begin() ? 0 : PictureAtTime(*(after - 1));
}

}  // namespace cli
