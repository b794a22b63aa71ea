#include "cli/panel/render.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include "cli/report/error.h"
#include "cli/report/json.h"

namespace cli {
namespace {

using namespace std::chrono_literals;

constexpr auto kGrace = 5s;  // between asking and killing; a run ends by itself within about one
constexpr auto kLookAgain = 200ms;
constexpr auto kSignOfLife = 10s;  // between words to a listener, so that one who has gone is found out
constexpr std::size_t kMostLines = 10'000;

}  // namespace

PanelRender::PanelRender(const ToolCall& call) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
    Refuse(ExitCode::kFrameFailed, "cannot start a render: {}", std::generic_category().message(errno));
  }
  try {
    process_ = StartTool(call, -1, ends[1]);
  } catch (...) {
    ::close(ends[0]);
    ::close(ends[1]);
    throw;
  }
  ::close(ends[1]);
  thread_ = std::thread(&PanelRender::Follow, this, ends[0]);
}

PanelRender::~PanelRender() {
  Stop();
  thread_.join();
}

void PanelRender::Stop() {
  const std::scoped_lock lock(mutex_);
  // A second signal would end it at once, without what it keeps.
  if (!hasEnded_ && !stopped_) {
    stopped_ = std::chrono::steady_clock::now();
    ::kill(process_, SIGINT);
  }
}

bool PanelRender::HasEnded() const {
  const std::scoped_lock lock(mutex_);
  return hasEnded_;
}

void PanelRender::Wait() const {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return hasEnded_; });
}

HttpStream PanelRender::Events(std::shared_ptr<const PanelRender> render) {
  return [render = std::move(render), next = std::size_t{0}](std::string& text) mutable {
    return render->AddNext(next, text);
  };
}

bool PanelRender::AddNext(std::size_t& next, std::string& text) const {
  std::unique_lock lock(mutex_);
  const auto hasNews = [&] { return hasEnded_ || next < dropped_ + lines_.size(); };
  if (!changed_.wait_for(lock, kSignOfLife, hasNews)) {
    text += ":\n\n";  // a comment
    return true;
  }
  for (next = std::max(next, dropped_); next < dropped_ + lines_.size(); ++next) {
    text += "data: " + lines_[next - dropped_] + "\n\n";
  }
  return !hasEnded_;
}

void PanelRender::Follow(int standardError) {
  std::string line;
  std::array<char, 4096> bytes{};
  while (true) {
    KillWhenOverdue();
    pollfd ready{standardError, POLLIN, 0};
    if (::poll(&ready, 1, static_cast<int>(std::chrono::milliseconds(kLookAgain).count())) <= 0) {
      continue;
    }
    const ssize_t count = ::read(standardError, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count <= 0) {
      break;
    }
    for (const char letter : std::string_view(bytes.data(), static_cast<std::size_t>(count))) {
      if (letter == '\n') {
        Add(std::exchange(line, {}));
      } else {
        line += letter;
      }
    }
  }
  ::close(standardError);
  // As long as it is not waited for, its number is not another process's, and Stop may send signals there.
  siginfo_t ended{};
  while (::waitid(P_PID, static_cast<id_t>(process_), &ended, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
  }
  const std::scoped_lock lock(mutex_);
  const int code = WaitForTool(process_);
  if (!saidEnd_) {
    lines_.push_back(Json({{"event", "end"}, {"code", code}}).dump());
  }
  hasEnded_ = true;
  changed_.notify_all();
}

void PanelRender::KillWhenOverdue() {
  const std::scoped_lock lock(mutex_);
  if (stopped_ && std::chrono::steady_clock::now() - *stopped_ > kGrace) {
    ::kill(process_, SIGKILL);
  }
}

void PanelRender::Add(const std::string& line) {
  const Json object = Json::parse(line, nullptr, false);
  if (!object.is_object()) {
    return;
  }
  saidEnd_ = saidEnd_ || object.value("event", Json()) == "end";
  const std::scoped_lock lock(mutex_);
  lines_.push_back(line);
  if (lines_.size() > kMostLines) {
    lines_.pop_front();
    ++dropped_;
  }
  changed_.notify_all();
}

}  // namespace cli
