// The one exception of the tool: a message for the user and the code that the process ends with.
#pragma once

#include <fmt/format.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace cli {

/// What the process returns.  Scripts rely on the numbers; they do not change.
enum class ExitCode : int {
  kDone = 0,
  kFrameFailed = 1,    // a frame could not be rendered, or a check of an effect failed
  kUsage = 2,          // the command line is wrong
  kInput = 3,          // a file could not be read
  kOutput = 4,         // a file could not be written
  kInterrupted = 130,  // ended by a signal, frames that were done are kept
};

/// The message is one sentence for the user without a final period: what is wrong, the value, the limit,
/// and what to try.
class ToolError : public std::runtime_error {
 public:
  ToolError(ExitCode code, const std::string& message) : std::runtime_error(message), code_(code) {}
  ExitCode Code() const { return code_; }

 private:
  ExitCode code_;
};

/// Ends what is being done, by throwing a ToolError: the one way of the tool to say no.  A parser does not
/// name the option or key that its text came from; its caller does, with About.
template <class... Arguments>
[[noreturn]] void Refuse(ExitCode code, fmt::format_string<Arguments...> text, Arguments&&... arguments) {
  throw ToolError(code, fmt::format(text, std::forward<Arguments>(arguments)...));
}

/// Runs `task`, and puts the option, key or file that it is about before what it refuses: "--fps: ...".
template <class Task>
decltype(auto) About(std::string_view subject, Task&& task) {
  try {
    return std::forward<Task>(task)();
  } catch (const ToolError& error) {
    Refuse(error.Code(), "{}: {}", subject, error.what());
  }
}

/// Says no to a file that cannot be read, with kInput, or written, with kOutput; `reason` is half a sentence.
[[noreturn]] inline void RefuseInput(const std::filesystem::path& path, std::string_view reason) {
  Refuse(ExitCode::kInput, "cannot read '{}': {}", path.string(), reason);
}
[[noreturn]] inline void RefuseOutput(const std::filesystem::path& path, std::string_view reason) {
  Refuse(ExitCode::kOutput, "cannot write '{}': {}", path.string(), reason);
}

}  // namespace cli
