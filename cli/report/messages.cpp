#include "cli/report/messages.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>

#include "cli/report/json.h"

namespace cli {
namespace {

void WriteAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written < 0 && errno == EINTR) {
      continue;
    }
    // Nobody being there to read is no reason to end the run.
    if (written <= 0) {
      return;
    }
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

std::string NoteLine(std::string_view text) {
  return JsonLine({{"event", "note"}, {"message", text}});
}

/// Until the last writer has gone.
void TurnIntoNotes(int from, int to) {
  std::string line;
  std::array<char, 4096> bytes{};
  for (ssize_t count; (count = ::read(from, bytes.data(), bytes.size())) != 0;) {
    if (count < 0 && errno != EINTR) {
      break;
    }
    for (const char letter :
         std::string_view(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)))) {
      if (letter != '\n') {
        line += letter;
      } else if (!line.empty()) {
        WriteAll(to, NoteLine(line));
        line.clear();
      }
    }
  }
  if (!line.empty()) {
    WriteAll(to, NoteLine(line));
  }
  ::close(from);
}

}  // namespace

MessageForm FormOf(const std::vector<std::string>& arguments) {
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const bool isNext =
        arguments[i] == "--progress" && i + 1 < arguments.size() && arguments[i + 1] == "json";
    if (isNext || arguments[i] == "--progress=json") {
      return MessageForm::kJson;
    }
  }
  return MessageForm::kText;
}

Messages::Messages(MessageForm form) : form_(form) {
  if (form_ == MessageForm::kJson) {
    TakeOverStandardError();
  }
}

Messages::~Messages() {
  GiveBackStandardError();
  if (standardError_ >= 0) {
    ::close(standardError_);
  }
}

void Messages::TakeOverStandardError() {
  std::array<int, 2> ends{};
  standardError_ = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (standardError_ < 0 || ::pipe2(ends.data(), O_CLOEXEC) != 0) {
    return;
  }
  ::dup2(ends[1], STDERR_FILENO);
  ::close(ends[1]);
  library_ = std::thread(&TurnIntoNotes, ends[0], standardError_);
}

void Messages::GiveBackStandardError() {
  if (library_.joinable()) {
    std::fflush(stderr);
    ::dup2(standardError_, STDERR_FILENO);  // closes the pipe's end, so that the thread comes to its own
    library_.join();
  }
}

void Messages::Write(const std::string& text) const {
  // In one piece, so that the lines of several threads do not mix.
  WriteAll(standardError_ >= 0 ? standardError_ : STDERR_FILENO, text);
}

void Messages::Say(std::string_view line) {
  if (form_ == MessageForm::kText && !isQuiet_) {
    Write(fmt::format("{}\n", line));
  }
}

void Messages::Note(std::string_view text) {
  if (form_ == MessageForm::kJson) {
    Write(NoteLine(text));
  } else {
    Say(fmt::format("note: {}", text));
  }
}

void Messages::Error(ExitCode code, std::string_view text) {
  Write(form_ == MessageForm::kJson
            ? JsonLine({{"event", "error"}, {"code", static_cast<int>(code)}, {"message", text}})
            : fmt::format("vintrel: {}\n", text));
}

void Messages::FrameDoneBefore(std::int32_t frame, std::string_view path) {
  if (form_ == MessageForm::kJson) {
    Write(JsonLine({{"event", "frame"},
                    {"frame", frame},
                    {"status", "skipped"},
                    {"path", path},
                    {"reason", "it was done before"}}));
  }
}

void Messages::FramesSoFar(const RunEnd& end) {
  const std::scoped_lock lock(soFarMutex_);
  soFar_ = end;
}

void Messages::EndEarly(ExitCode code) {
  RunEnd end;
  {
    const std::scoped_lock lock(soFarMutex_);
    end = soFar_;
  }
  end.code = code;
  End(end);
}

void Messages::End(const RunEnd& end) {
  if (form_ != MessageForm::kJson || hasEnded_) {
    return;
  }
  hasEnded_ = true;
  GiveBackStandardError();  // no note comes after the end
  Write(JsonLine({{"event", "end"},
                  {"code", static_cast<int>(end.code)},
                  {"written", end.written},
                  {"skipped", end.skipped},
                  {"missing", end.missing},
                  {"failed", end.failed},
                  {"left", end.left},
                  {"seconds", Thousandths(end.seconds)}}));
}

ProgressOutlet Messages::Outlet() const {
  ProgressOutlet outlet = StandardErrorOutlet();
  outlet.write = [this](const std::string& text) { Write(text); };
  return outlet;
}

void PrintToStdout(const std::string& text) {
  const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
  if (std::fflush(stdout) != 0 || !written) {
    Refuse(ExitCode::kOutput, "cannot write to standard output: {}", std::generic_category().message(errno));
  }
}

}  // namespace cli
