// All that goes to standard error: lines for people, or JSON for programs.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "cli/report/error.h"
#include "cli/report/progress.h"

namespace cli {

enum class MessageForm {
  kText,
  kJson,  // an object a line, and nothing else
};

/// Whether the arguments have `--progress json`: asked before they are parsed, since what is wrong with them
/// is told in the same form.
MessageForm FormOf(const std::vector<std::string>& arguments);

/// How a run ended.  The frames are counted as in their objects' "status".
struct RunEnd {
  ExitCode code = ExitCode::kDone;
  std::size_t written = 0;
  std::size_t skipped = 0;
  std::size_t missing = 0;
  std::size_t failed = 0;
  std::size_t left = 0;
  double seconds = 0;
};

/// In JSON every object has an "event", "frame", "note", "error" or "end", the last of a run is its end, and
/// what libraries print on standard error by themselves becomes notes.  One of these at a time.
class Messages {
 public:
  explicit Messages(MessageForm form);
  ~Messages();
  Messages(const Messages&) = delete;
  Messages& operator=(const Messages&) = delete;

  MessageForm Form() const { return form_; }

  /// From now on people hear of errors alone.  Programs still get everything.
  void BeQuiet() { isQuiet_ = form_ == MessageForm::kText; }

  /// For people alone.
  void Say(std::string_view line);

  void Note(std::string_view text);
  void Error(ExitCode code, std::string_view text);

  /// A frame that an earlier run has done; for programs alone.
  void FrameDoneBefore(std::int32_t frame, std::string_view path);

  /// What there is to tell of the frames, should the run end before it is over; on one thread at a time.
  void FramesSoFar(const RunEnd& end);

  /// The end of a run that an error or a signal cuts short, with the frames so far.  On any thread.
  void EndEarly(ExitCode code);

  /// For programs alone.  Once: later calls do nothing.
  void End(const RunEnd& end);

  /// The place for the progress of the frames.
  ProgressOutlet Outlet() const;

 private:
  void Write(const std::string& text) const;
  void TakeOverStandardError();
  void GiveBackStandardError();

  MessageForm form_;
  bool isQuiet_ = false;
  bool hasEnded_ = false;
  std::mutex soFarMutex_;
  RunEnd soFar_;
  int standardError_ = -1;  // in JSON: the real one, while libraries write into a pipe
  std::thread library_;     // turns what comes through the pipe into notes
};

/// Prints what somebody asked for; it has to arrive.  Throws ToolError(kOutput), as on a full disk.
void PrintToStdout(const std::string& text);

}  // namespace cli
