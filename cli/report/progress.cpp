#include "cli/report/progress.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <utility>

#include "cli/report/json.h"

namespace cli {
namespace {

constexpr double kLineInterval = 10;  // seconds
constexpr double kBarInterval = 0.1;  // more often than this nobody can read
constexpr int kDefaultWidth = 80;
constexpr int kMaxWidth = 100;
constexpr int kMinBar = 10;  // columns of a bar that is worth drawing

constexpr std::string_view kEraseLine = "\r\x1b[K";

double SecondsLeft(const ProgressState& state) {
  if (state.done == 0) {
    return std::numeric_limits<double>::infinity();
  }
  const auto left = static_cast<double>(state.total - state.done);
  return left * state.seconds / static_cast<double>(state.done);
}

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

int TerminalWidth() {
  winsize size{};
  const bool known = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return known ? std::min<int>(size.ws_col, kMaxWidth) : kDefaultWidth;
}

bool IsTerminal() {
  return ::isatty(STDERR_FILENO) == 1 && Environment("TERM") != "dumb";
}

}  // namespace

double ProgressState::FramesPerSecond() const {
  return seconds > 0 ? static_cast<double>(done) / seconds : 0;
}

std::string FormatDuration(double seconds) {
  constexpr double kMost = 1000 * 3600;
  if (!(seconds >= 0 && seconds < kMost)) {
    return "-:--";
  }
  const int whole = static_cast<int>(std::ceil(seconds));
  const int minutes = whole / 60;
  if (minutes < 60) {
    return fmt::format("{}:{:02}", minutes, whole % 60);
  }
  return fmt::format("{}:{:02}:{:02}", minutes / 60, minutes % 60, whole % 60);
}

std::string FormatBar(const ProgressState& state, int width, ProgressColor color) {
  const std::string total = fmt::format("{}", state.total);
  const std::string text = fmt::format("{:{}}/{}  {:.1f} fps  {} left", state.done, total.size(), total,
                                       state.FramesPerSecond(), FormatDuration(SecondsLeft(state)));
  constexpr int kAround = 4;  // two brackets, two spaces
  const int room = width - static_cast<int>(text.size()) - kAround;
  if (room < kMinBar) {
    return text.substr(0, static_cast<std::size_t>(std::max(width, 0)));
  }
  const auto columns = static_cast<std::size_t>(room);
  const std::size_t full = state.total == 0 ? 0 : columns * state.done / state.total;
  std::string bar(full, '=');
  if (full > 0 && full < columns) {
    bar.back() = '>';
  }
  const bool colored = color == ProgressColor::kColored;
  return fmt::format("[{}{}{}{:{}}]  {}", colored ? "\x1b[36m" : "", bar, colored ? "\x1b[0m" : "", "",
                     columns - full, text);
}

std::string FormatLine(const ProgressState& state) {
  return fmt::format("{} of {} frame{}, {:.1f} fps, {} left", state.done, state.total,
                     state.total == 1 ? "" : "s", state.FramesPerSecond(),
                     FormatDuration(SecondsLeft(state)));
}

std::string FormatJson(const ProgressState& state, const FrameNews& news) {
  Json object = {{"event", "frame"}, {"frame", news.frame}, {"status", news.status}, {"path", news.path}};
  if (!news.reason.empty()) {
    object["reason"] = news.reason;
  }
  object["done"] = state.done;
  object["total"] = state.total;
  object["fps"] = Thousandths(state.FramesPerSecond());
  return JsonLine(object);
}

ProgressOutlet StandardErrorOutlet() {
  ProgressOutlet outlet;
  outlet.write = [](const std::string& text) {
    // Nobody being there to read how far the run is, is no reason to end it.
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
  };
  outlet.clock = [] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
  };
  outlet.width = &TerminalWidth;
  if (IsTerminal() && Environment("NO_COLOR").empty()) {
    outlet.color = ProgressColor::kColored;
  }
  return outlet;
}

ProgressStyle StyleFor(ProgressWish wish) {
  if (wish == ProgressWish::kNone) {
    return ProgressStyle::kNone;
  }
  if (wish == ProgressWish::kJson) {
    return ProgressStyle::kJson;
  }
  return IsTerminal() ? ProgressStyle::kBar : ProgressStyle::kLines;
}

Progress::Progress(ProgressStyle style, std::size_t total, ProgressOutlet outlet)
    : style_(style), outlet_(std::move(outlet)), start_(outlet_.clock()), lastWrite_(0) {
  state_.total = total;
  if (style_ == ProgressStyle::kBar) {
    WriteBar();
  }
}

Progress::~Progress() {
  if (hasBar_) {
    outlet_.write(std::string(kEraseLine));
  }
}

void Progress::FrameDone(const FrameNews& news) {
  ++state_.done;
  state_.seconds = outlet_.clock() - start_;
  const double since = state_.seconds - lastWrite_;
  if (style_ == ProgressStyle::kBar && since >= kBarInterval) {
    WriteBar();
  } else if (style_ == ProgressStyle::kLines && since >= kLineInterval) {
    outlet_.write(FormatLine(state_) + '\n');
  } else if (style_ == ProgressStyle::kJson) {
    outlet_.write(FormatJson(state_, news));
  } else {
    return;
  }
  lastWrite_ = state_.seconds;
}

void Progress::WriteBar() {
  hasBar_ = true;
  // The last column stays free: some terminals begin a new line once it is filled.
  outlet_.write(std::string(kEraseLine) + FormatBar(state_, outlet_.width() - 1, outlet_.color));
}

}  // namespace cli
