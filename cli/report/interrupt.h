// The user's wish to end a run early: Ctrl-C, or the signal of a queue that needs the machine.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace cli {

/// From now on SIGINT, SIGTERM and SIGHUP end the process with code 130, at once and with all that a Leftover
/// names removed.  A signal that was ignored when the process started (nohup, a shell's background job) stays
/// ignored.
///
/// For the rest of the process: libraries take their time to end after `main`, and the code holds until then.
void WatchForInterrupts();

/// While one of these lives, the first signal is noted instead, so that frames that are done are kept; the
/// second one ends the process.  When the run has not ended a second after the first, since what is under way
/// cannot be broken off, `beforeEnd` is called on a thread of its own and the process ends then.
class GracefulEnd {
 public:
  /// Forgets what was noted before.
  explicit GracefulEnd(std::function<void()> beforeEnd);
  ~GracefulEnd();
  GracefulEnd(const GracefulEnd&) = delete;
  GracefulEnd& operator=(const GracefulEnd&) = delete;

 private:
  void Wait(const std::function<void()>& beforeEnd);

  std::mutex mutex_;
  std::condition_variable wake_;
  bool hasEnded_ = false;
  std::thread thread_;
};

/// Whether a signal has been noted.  Cheap; from any thread.
bool Interrupted() noexcept;

/// A file that does not outlive the process when a signal ends it.  Of more than 64 at a time the others do.
class Leftover {
 public:
  explicit Leftover(const std::string& path);
  ~Leftover();
  Leftover(const Leftover&) = delete;
  Leftover& operator=(const Leftover&) = delete;

 private:
  char* path_;
  int slot_ = -1;
};

}  // namespace cli
