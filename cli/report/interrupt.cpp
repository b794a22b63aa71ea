#include "cli/report/interrupt.h"

#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>

#include "cli/report/error.h"

namespace cli {
namespace {

std::atomic<bool> noted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may not wait for a lock");

constexpr std::array kSignals = {SIGINT, SIGTERM};
std::array<struct sigaction, kSignals.size()> earlier;

extern "C" void NoteInterrupt(int) {
  if (noted.exchange(true)) {
    ::_exit(static_cast<int>(ExitCode::kInterrupted));
  }
}

}  // namespace

InterruptWatch::InterruptWatch() {
  noted = false;
  struct sigaction action {};
  action.sa_handler = &NoteInterrupt;
  // Reads and writes under way go on as if nothing had happened; not every library expects EINTR.
  action.sa_flags = SA_RESTART;
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    ::sigaction(kSignals[i], nullptr, &earlier[i]);
    if (earlier[i].sa_handler != SIG_IGN) {
      ::sigaction(kSignals[i], &action, nullptr);
    }
  }
}

InterruptWatch::~InterruptWatch() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    ::sigaction(kSignals[i], &earlier[i], nullptr);
  }
}

bool Interrupted() noexcept {
  return noted.load(std::memory_order_relaxed);
}

}  // namespace cli
