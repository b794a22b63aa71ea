// The user's wish to end a run early: Ctrl-C, or the signal of a queue that needs the machine.
#pragma once

namespace cli {

/// While one of these lives, SIGINT and SIGTERM are noted instead of ending the process, so that frames that
/// are done are kept.  The second signal ends the process at once with code 130.  A signal that was ignored
/// when the process started (nohup, a shell's background job) stays ignored.
///
/// One at a time.  The destructor puts back the handlers that were there; what was noted stays noted.
class InterruptWatch {
 public:
  /// Forgets what was noted before.
  InterruptWatch();
  ~InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;
};

/// Whether a signal has been noted.  Cheap; from any thread.
bool Interrupted() noexcept;

}  // namespace cli
