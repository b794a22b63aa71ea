#include "cli/report/interrupt.h"

#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "cli/report/error.h"

namespace cli {
namespace {

using namespace std::chrono_literals;

constexpr auto kGrace = 1s;
constexpr auto kLookAgain = 50ms;

std::atomic<bool> isGraceful = false;
std::atomic<bool> noted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may not wait for a lock");

// Whoever takes a path out of its slot owns it.
constexpr std::size_t kSlots = 64;
std::array<std::atomic<char*>, kSlots> leftovers;

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

/// In a signal handler, too.
[[noreturn]] void EndAtOnce() {
  for (std::atomic<char*>& slot : leftovers) {
    if (const char* path = slot.exchange(nullptr)) {
      ::unlink(path);
    }
  }
  ::_exit(static_cast<int>(ExitCode::kInterrupted));
}

extern "C" void NoteInterrupt(int) {
  if (!isGraceful || noted.exchange(true)) {
    EndAtOnce();
  }
}

}  // namespace

void WatchForInterrupts() {
  // So that a file that grows beyond the limit is an error of writing, after which nothing is left behind.
  ::signal(SIGXFSZ, SIG_IGN);
  struct sigaction action {};
  action.sa_handler = &NoteInterrupt;
  // Reads and writes under way go on as if nothing had happened; not every library expects EINTR.
  action.sa_flags = SA_RESTART;
  for (const int signal : kSignals) {
    struct sigaction earlier {};
    ::sigaction(signal, nullptr, &earlier);
    if (earlier.sa_handler != SIG_IGN) {
      ::sigaction(signal, &action, nullptr);
    }
  }
}

GracefulEnd::GracefulEnd(std::function<void()> beforeEnd) {
  noted = false;
  isGraceful = true;
  thread_ = std::thread([this, end = std::move(beforeEnd)] { Wait(end); });
}

GracefulEnd::~GracefulEnd() {
  {
    const std::scoped_lock lock(mutex_);
    hasEnded_ = true;
  }
  wake_.notify_one();
  thread_.join();
  isGraceful = false;
}

void GracefulEnd::Wait(const std::function<void()>& beforeEnd) {
  std::unique_lock lock(mutex_);
  const auto hasEnded = [this] { return hasEnded_; };
  // A handler can wake nobody up, so this looks from time to time.
  while (!Interrupted()) {
    if (wake_.wait_for(lock, kLookAgain, hasEnded)) {
      return;
    }
  }
  if (wake_.wait_for(lock, kGrace, hasEnded)) {
    return;
  }
  beforeEnd();
  EndAtOnce();
}

bool Interrupted() noexcept {
  return noted.load(std::memory_order_relaxed);
}

Leftover::Leftover(const std::string& path) : path_(::strdup(path.c_str())) {
  if (path_ == nullptr) {
    throw std::bad_alloc();
  }
  for (std::size_t i = 0; i < kSlots && slot_ < 0; ++i) {
    char* empty = nullptr;
    if (leftovers[i].compare_exchange_strong(empty, path_)) {
      slot_ = static_cast<int>(i);
    }
  }
}

Leftover::~Leftover() {
  // Not there any more: the process is about to end, and is using it.
  char* own = path_;
  if (slot_ < 0 || leftovers[static_cast<std::size_t>(slot_)].compare_exchange_strong(own, nullptr)) {
    std::free(path_);
  }
}

}  // namespace cli
