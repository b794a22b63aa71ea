// The tool itself, run once more as a process of its own.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

struct ToolCall {
  std::filesystem::path tool;
  std::vector<std::string> arguments;
  std::string scene;  // what `--scene /dev/stdin` reads
};

/// Starts the tool with standard output and error in these descriptors, -1 for nowhere.  It leads a process
/// group of its own, so that Ctrl-C reaches this process alone, and a signal that this process ignores ends
/// it all the same.  Throws ToolError(kFrameFailed).
pid_t StartTool(const ToolCall& call, int standardOutput, int standardError);

/// The exit code of a process that was started, when it has ended; 128 and the signal's number when one ended
/// it.
int WaitForTool(pid_t process);

struct ToolOutcome {
  int code = 0;
  std::string out;
  std::string err;
};

/// Runs the tool to its end.
ToolOutcome RunTool(const ToolCall& call);

}  // namespace cli
