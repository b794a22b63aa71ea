// How far a run has come, on standard error: a bar on a terminal, now and then a line elsewhere, or JSON.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace cli {

enum class ProgressStyle {
  kNone,
  kBar,    // one line that is written over
  kLines,  // a line every ten seconds
  kJson,   // an object a line for every frame
};

/// What is asked for on the command line.
enum class ProgressWish { kNone, kText, kJson };

enum class ProgressColor { kPlain, kColored };

struct ProgressState {
  std::size_t done = 0;
  std::size_t total = 0;
  double seconds = 0;  // since the start

  /// 0 before any time has passed.
  double FramesPerSecond() const;
};

/// `[=====>    ]  12/240  3.4 fps  1:07 left`, at most `width` columns; without the bar where that is narrow.
std::string FormatBar(const ProgressState& state, int width, ProgressColor color);

/// `12 of 240 frames, 3.4 fps, 1:07 left`.
std::string FormatLine(const ProgressState& state);

/// What became of a frame.
struct FrameNews {
  std::int32_t frame = 0;
  std::string_view status;  // "written", "skipped", "missing" or "failed"
  std::string path{};       // of the file that holds the frame, or would
  std::string reason{};     // empty when it is written
};

/// `{"event":"frame","frame":7,"status":"written","path":"snow.0007.png","done":12,"total":240,"fps":3.4}`.
std::string FormatJson(const ProgressState& state, const FrameNews& news);

/// `0:07`, `1:02:03`; seconds are rounded up.  `-:--` for what is not finite, or beyond a thousand hours.
std::string FormatDuration(double seconds);

/// What a progress report needs to know of the outside.
struct ProgressOutlet {
  std::function<void(const std::string&)> write;
  std::function<double()> clock;  // seconds, from any start, never backwards
  std::function<int()> width;     // of the terminal, columns
  ProgressColor color = ProgressColor::kPlain;
};

/// Standard error, the steady clock, and the terminal's width up to 100 columns (80 when it does not say).
/// In color on a terminal, unless the environment has NO_COLOR with something in it.
ProgressOutlet StandardErrorOutlet();

/// A bar only where standard error is a terminal that can go back to the start of a line.
ProgressStyle StyleFor(ProgressWish wish);

/// One thread at a time.
class Progress {
 public:
  Progress(ProgressStyle style, std::size_t total, ProgressOutlet outlet);

  /// Takes the bar away, so that what comes next starts at the left margin.
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void FrameDone(const FrameNews& news);

 private:
  void WriteBar();

  ProgressStyle style_;
  ProgressOutlet outlet_;
  double start_;
  double lastWrite_;  // seconds since the start
  ProgressState state_;
  bool hasBar_ = false;
};

}  // namespace cli
