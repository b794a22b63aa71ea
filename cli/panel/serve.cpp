#include "cli/panel/serve.h"

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "cli/report/error.h"

namespace cli {

PanelEnd Serve(HttpServer& server, Panel& panel, const std::function<bool()>& interrupted) {
  using namespace std::chrono_literals;
  std::atomic<bool> hasEnded = false;
  std::thread answering([&] {
    server.Run([&](const HttpRequest& request) { return panel.Answer(request); });
    hasEnded = true;
  });
  while (!hasEnded && !interrupted() && !panel.IsAbandoned()) {
    std::this_thread::sleep_for(50ms);
  }
  const bool hasBrokenDown = hasEnded;
  // The server last, so that the page hears of the renders' end.
  panel.Stop();
  panel.WaitForRenders();
  server.Stop();
  answering.join();
  if (hasBrokenDown) {
    Refuse(ExitCode::kFrameFailed, "the panel's server has broken down");
  }
  return interrupted() ? PanelEnd::kInterrupted : PanelEnd::kAbandoned;
}

bool OpenBrowser(const std::string& address) {
  posix_spawn_file_actions_t actions{};
  ::posix_spawn_file_actions_init(&actions);
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    ::posix_spawn_file_actions_addopen(&actions, descriptor, "/dev/null", O_RDWR, 0);
  }
  // Out of reach of Ctrl-C in this terminal: a browser may have begun with this.
  posix_spawnattr_t attributes{};
  ::posix_spawnattr_init(&attributes);
  ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
  std::string name = "xdg-open";
  std::string argument = address;
  char* arguments[] = {name.data(), argument.data(), nullptr};
  pid_t process = 0;
  const int error = ::posix_spawnp(&process, name.c_str(), &actions, &attributes, arguments, environ);
  ::posix_spawnattr_destroy(&attributes);
  ::posix_spawn_file_actions_destroy(&actions);
  return error == 0;
}

}  // namespace cli
