#include "cli/panel/tool_process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "cli/report/error.h"

namespace cli {
namespace {

/// A file without a name, gone with the last process that has it open.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view text = {}) : descriptor_(::memfd_create("vintrel", MFD_CLOEXEC)) {
    while (descriptor_ >= 0 && !text.empty()) {
      const ssize_t written = ::write(descriptor_, text.data(), text.size());
      if (written <= 0) {
        break;
      }
      text.remove_prefix(static_cast<std::size_t>(written));
    }
    if (descriptor_ < 0 || !text.empty()) {
      const int reason = errno;
      Close();
      Refuse(ExitCode::kFrameFailed, "out of memory for a file: {}", std::generic_category().message(reason));
    }
  }
  ~MemoryFile() { Close(); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  int Descriptor() const { return descriptor_; }

  std::string Text() const {
    std::string text;
    std::array<char, 4096> bytes{};
    for (ssize_t count;
         (count = ::pread(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(text.size()))) > 0;) {
      text.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return text;
  }

 private:
  void Close() {
    if (descriptor_ >= 0) {
      ::close(descriptor_);
    }
  }

  int descriptor_;
};

class SpawnActions {
 public:
  SpawnActions() { ::posix_spawn_file_actions_init(&actions_); }
  ~SpawnActions() { ::posix_spawn_file_actions_destroy(&actions_); }
  SpawnActions(const SpawnActions&) = delete;
  SpawnActions& operator=(const SpawnActions&) = delete;

  void Give(int from, int to) {
    if (from < 0) {
      ::posix_spawn_file_actions_addopen(&actions_, to, "/dev/null", O_WRONLY, 0);
    } else {
      ::posix_spawn_file_actions_adddup2(&actions_, from, to);
    }
  }
  const posix_spawn_file_actions_t* Get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_{};
};

class SpawnAttributes {
 public:
  SpawnAttributes() {
    ::posix_spawnattr_init(&attributes_);
    sigset_t signals;
    ::sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&attributes_, &signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
      ::sigaddset(&signals, signal);
    }
    ::posix_spawnattr_setsigdefault(&attributes_, &signals);
    ::posix_spawnattr_setflags(&attributes_,
                               POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  }
  ~SpawnAttributes() { ::posix_spawnattr_destroy(&attributes_); }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;

  const posix_spawnattr_t* Get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_{};
};

}  // namespace

pid_t StartTool(const ToolCall& call, int standardOutput, int standardError) {
  const MemoryFile scene(call.scene);
  SpawnActions actions;
  actions.Give(scene.Descriptor(), STDIN_FILENO);
  actions.Give(standardOutput, STDOUT_FILENO);
  actions.Give(standardError, STDERR_FILENO);
  std::string name = "vintrel";
  std::vector<std::string> arguments = call.arguments;
  std::vector<char*> pointers = {name.data()};
  for (std::string& argument : arguments) {
    pointers.push_back(argument.data());
  }
  pointers.push_back(nullptr);
  pid_t process = 0;
  const SpawnAttributes attributes;
  const int error =
      ::posix_spawn(&process, call.tool.c_str(), actions.Get(), attributes.Get(), pointers.data(), environ);
  if (error != 0) {
    Refuse(ExitCode::kFrameFailed, "cannot start '{}': {}", call.tool.string(),
           std::generic_category().message(error));
  }
  return process;
}

int WaitForTool(pid_t process) {
  int status = 0;
  while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

ToolOutcome RunTool(const ToolCall& call) {
  const MemoryFile out;
  const MemoryFile err;
  const int code = WaitForTool(StartTool(call, out.Descriptor(), err.Descriptor()));
  return {code, out.Text(), err.Text()};
}

}  // namespace cli
