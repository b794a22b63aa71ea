#include "cli/check/children.h"

#include <fmt/format.h>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "cli/report/error.h"

namespace cli::check {
namespace {

using Clock = std::chrono::steady_clock;

/// A page that parent and child see.
class SharedPlace {
 public:
  SharedPlace() {
    void* const page =
        ::mmap(nullptr, sizeof(Whereabouts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) {
      throw std::bad_alloc();
    }
    place_ = new (page) Whereabouts;
  }
  ~SharedPlace() { ::munmap(place_, sizeof(Whereabouts)); }
  SharedPlace(const SharedPlace&) = delete;
  SharedPlace& operator=(const SharedPlace&) = delete;

  Whereabouts& operator*() const { return *place_; }

 private:
  Whereabouts* place_;
};

void WriteAll(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(file, text.data(), text.size());
    if (written <= 0) {
      return;  // the parent has gone
    }
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

// In the child: everything that the parent is to know goes through the pipe, an object a line, the last one
// whole.  What has been found goes at once, since the child may not live to the end.
[[noreturn]] void Work(const ChildOrder& order, Whereabouts& place, int pipe) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  const rlimit none{0, 0};
  ::setrlimit(RLIMIT_CORE, &none);
  const auto send = [pipe](const Tally& tally, bool ended, std::string_view broken) {
    WriteAll(pipe, JsonLine({{"checks", JsonOf(tally.Checks())}, {"ended", ended}, {"broken", broken}}));
  };
  Tally tally(place, [&send](const Tally& soFar) { send(soFar, false, ""); });
  std::string broken;
  try {
    order.work(tally);
  } catch (const std::exception& error) {
    broken = fmt::format("could not go on: {}", error.what());
  } catch (...) {
    broken = "what the effect threw came through";
  }
  send(tally, true, broken);
  ::_exit(0);
}

/// A level on its way.
class Child {
 public:
  explicit Child(const ChildOrder& order) : level_(*order.level), began_(Clock::now()) {
    int ends[2];
    if (::pipe(ends) != 0) {
      Refuse(ExitCode::kFrameFailed, "no pipe for level {}: {}", level_.number, std::strerror(errno));
    }
    pipe_ = ends[0];
    process_ = ::fork();
    if (process_ == 0) {
      ::close(ends[0]);
      Work(order, *place_, ends[1]);
    }
    ::close(ends[1]);
    if (process_ < 0) {
      ::close(pipe_);
      Refuse(ExitCode::kFrameFailed, "no process for level {}: {}", level_.number, std::strerror(errno));
    }
  }
  ~Child() {
    if (process_ > 0) {
      ::kill(process_, SIGKILL);
      ::waitpid(process_, nullptr, 0);
    }
    ::close(pipe_);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  int Pipe() const { return pipe_; }
  double Seconds() const { return std::chrono::duration<double>(Clock::now() - began_).count(); }

  /// Reads what is there.  False when no more will come.
  bool Read() {
    char block[4096];
    const ssize_t count = ::read(pipe_, block, sizeof block);
    text_.append(block, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return count > 0;
  }

  LevelReport Late() {
    LevelReport report = SoFar();
    report.broken = fmt::format("took longer than its time, at {}", Place());
    return report;
  }

  LevelReport Finish() {
    LevelReport report = SoFar();
    int status = 0;
    ::waitpid(std::exchange(process_, -1), &status, 0);
    if (WIFSIGNALED(status)) {
      report.broken = fmt::format("ended by signal {} ({}) at {}", WTERMSIG(status),
                                  ::strsignal(WTERMSIG(status)), Place());
      return report;
    }
    if (!hasEnded_ || WEXITSTATUS(status) != 0) {
      report.broken = fmt::format("ended with code {} at {}", WEXITSTATUS(status), Place());
    } else if (!report.broken.empty()) {
      report.broken += ", at " + Place();
    }
    return report;
  }

 private:
  // What the child has told.
  LevelReport SoFar() {
    LevelReport report;
    report.number = level_.number;
    report.name = level_.name;
    report.seconds = Seconds();
    const Json answer = Json::parse(LastLine(), nullptr, false);
    if (!answer.is_discarded()) {
      report.checks = ChecksOf(answer.at("checks"));
      report.broken = answer.at("broken");
      hasEnded_ = answer.at("ended");
    }
    return report;
  }
  std::string Place() const {
    const Whereabouts& place = *place_;
    return fmt::format("try {} of '{}': {}", place.tried, place.check, place.attempt);
  }

  // Without what may come after it of a line that was broken off.
  std::string_view LastLine() const {
    const std::string_view whole = std::string_view(text_).substr(0, text_.rfind('\n') + 1);
    const std::size_t before = whole.empty() ? whole.npos : whole.rfind('\n', whole.size() - 2);
    return before == whole.npos ? whole : whole.substr(before + 1);
  }

  const Level& level_;
  SharedPlace place_;
  Clock::time_point began_;
  int pipe_ = -1;
  pid_t process_ = -1;
  std::string text_;
  bool hasEnded_ = false;
};

struct Place {
  std::unique_ptr<Child> child;
  std::optional<LevelReport> report;
};

// Waits a moment for news of those under way, and takes the reports of those that have ended.
void Attend(std::span<Place> places, std::chrono::seconds limit) {
  std::vector<pollfd> files;
  std::vector<Place*> open;
  for (Place& place : places) {
    if (place.child != nullptr) {
      files.push_back({place.child->Pipe(), POLLIN, 0});
      open.push_back(&place);
    }
  }
  constexpr int kLookAgain = 200;  // milliseconds
  ::poll(files.data(), files.size(), kLookAgain);
  for (std::size_t i = 0; i < open.size(); ++i) {
    Place& place = *open[i];
    if (files[i].revents != 0 && !place.child->Read()) {
      place.report = place.child->Finish();
    } else if (place.child->Seconds() > static_cast<double>(limit.count())) {
      place.report = place.child->Late();
    }
    if (place.report) {
      place.child.reset();
    }
  }
}

}  // namespace

void RunInChildren(std::span<const ChildOrder> orders, int jobs, std::chrono::seconds limit,
                   const std::function<void(LevelReport)>& report) {
  std::vector<Place> places(orders.size());
  std::size_t started = 0;
  std::size_t reported = 0;
  while (reported < orders.size()) {
    const auto busy =
        std::ranges::count_if(places, [](const Place& place) { return place.child != nullptr; });
    if (busy < jobs && started < orders.size()) {
      places[started].child = std::make_unique<Child>(orders[started]);
      ++started;
      continue;
    }
    Attend(places, limit);
    while (reported < orders.size() && places[reported].report) {
      report(*places[reported].report);
      ++reported;
    }
  }
}

}  // namespace cli::check
