// Level 9: many frames, many instances, and no more memory than at the start.
#include <fmt/format.h>
#include <unistd.h>

#include <fstream>

#include "cli/check/level.h"
#include "cli/check/scenario.h"

namespace cli::check {
namespace {

// What allocators and the kernel keep back, however little is used.
constexpr long kSlack = 1 << 20;

long ResidentBytes() {
  std::ifstream file("/proc/self/statm");
  long pages = 0;
  file >> pages >> pages;
  return pages * ::sysconf(_SC_PAGESIZE);
}

// An address sanitizer keeps freed memory for a while, to find who still uses it.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kKeepsFreedMemory = true;
#else
constexpr bool kKeepsFreedMemory = false;
#endif

void ExpectFlat(const LevelTask& task, Tally::Check check, long before) {
  if (kKeepsFreedMemory) {
    return task.tally.Note(check, "this build keeps freed memory; its growth says nothing");
  }
  const long grown = ResidentBytes() - before;
  task.tally.Expect(check, grown < kSlack,
                    fmt::format("{} bytes more are in use than after warming up", grown));
  task.tally.Note(check, fmt::format("{} KiB more in use than after warming up", grown / 1024));
}

void Frames(const LevelTask& task, Subject& subject) {
  const Tally::Check check = task.tally.Begin("frames in one instance", "frames");
  const std::uint64_t count = task.Tries(200'000);
  const Scenario& scenario = Scenarios().front();
  for (const minihost::Protocol protocol : kProtocols) {
    Stage stage({24, 18, minihost::Depth::kFloat, 1});
    minihost::Instance instance = subject.Make(scenario.numbers);
    const std::vector<std::byte> first = stage.Render(instance, stage.Begin(protocol, 2));
    long before = 0;
    for (std::uint64_t i = 0; i < count / 2; ++i) {
      task.tally.Try(check, "frame {}, {}", i, NameOf(protocol));
      const auto time = static_cast<std::int32_t>(i);
      stage.Render(instance, stage.Begin(protocol, time));
      if (i == 100) {
        before = ResidentBytes();
      }
    }
    ExpectFlat(task, check, before);
    task.tally.Expect(check, stage.Render(instance, stage.Begin(protocol, 2)) == first,
                      "an early frame has changed");
    const std::string complaints = Complaints(instance);
    task.tally.Expect(check, complaints.empty(), complaints);
  }
}

void Instances(const LevelTask& task, Subject& subject) {
  const Tally::Check check = task.tally.Begin("instances", "instances");
  Stage stage({24, 18, minihost::Depth::kBits8, 1});
  const Scenario& scenario = Scenarios().front();
  std::vector<std::byte> first;
  long before = 0;
  for (std::uint64_t i = 0; i < task.Tries(20'000); ++i) {
    task.tally.Try(check, "instance {}", i);
    minihost::Instance instance = subject.Make(scenario.numbers);
    const std::vector<std::byte> picture = stage.Render(instance, stage.Begin(minihost::Protocol::kSmart, 2));
    if (first.empty()) {
      first = picture;
    }
    task.tally.Expect(check, picture == first, "not the first one's frame");
    if (i == 100) {
      before = ResidentBytes();
    }
  }
  ExpectFlat(task, check, before);
}

}  // namespace

void CheckEndurance(const LevelTask& task) {
  Subject subject(task.module);
  Frames(task, subject);
  Instances(task, subject);
}

}  // namespace cli::check
