// One render under way, in a process of its own, and what it says.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "cli/panel/http.h"
#include "cli/panel/tool_process.h"

namespace cli {

class PanelRender {
 public:
  /// Starts it; the arguments have `--progress json`.  Throws ToolError(kFrameFailed).
  explicit PanelRender(const ToolCall& call);

  /// Stops it and waits for its end.
  ~PanelRender();
  PanelRender(const PanelRender&) = delete;
  PanelRender& operator=(const PanelRender&) = delete;

  /// Asks it to end as Ctrl-C does, which keeps frames that are done; when it has not within a few seconds,
  /// it is killed.  Returns at once.
  void Stop();

  bool HasEnded() const;
  void Wait() const;

  /// Its objects as server-sent events, from the first to the last, whenever asked for; after more than a few
  /// thousand without the earliest.  The last object has the event "end", even when the process was killed.
  static HttpStream Events(std::shared_ptr<const PanelRender> render);

 private:
  void Follow(int standardError);
  void Add(const std::string& line);
  bool AddNext(std::size_t& next, std::string& text) const;
  void KillWhenOverdue();

  pid_t process_ = 0;
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::deque<std::string> lines_;
  std::size_t dropped_ = 0;  // lines before those
  bool saidEnd_ = false;
  bool hasEnded_ = false;  // and the process's number is free
  std::optional<std::chrono::steady_clock::time_point> stopped_;
  std::thread thread_;
};

}  // namespace cli
