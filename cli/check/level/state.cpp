// Level 3: the record that an instance keeps between frames.
#include <fmt/format.h>

#include <cstring>
#include <map>
#include <utility>

#include "cli/check/instance_record.h"
#include "cli/check/level.h"
#include "cli/check/random.h"
#include "cli/check/scenario.h"

namespace cli::check {
namespace {

class States {
 public:
  States(const LevelTask& task, Subject& subject, minihost::Depth depth, minihost::Protocol protocol)
      : task_(task),
        subject_(subject),
        protocol_(protocol),
        stage_({.width = 24, .height = 18, .depth = depth, .padding = 1}),
        name_(fmt::format("{}, {}", NameOf(depth), NameOf(protocol))) {}

  // Each frame of a sequence keeps its record, and continues from the one before it at the same small cost.
  void InSequence(Tally::Check check) {
    minihost::Instance instance = subject_.Make(kLook);
    std::uint64_t reads = 0;
    for (std::int32_t time = 0; time < 40; ++time) {
      task_.tally.Try(check, "{}: frame {} in sequence", name_, time);
      subject_.host.Reset();
      WatchRecord();
      const std::vector<std::byte> picture = stage_.Render(instance, stage_.Begin(protocol_, time));
      const std::uint64_t now = subject_.host.Calls(Entry::kCheckoutParam);
      if (time == 1) {
        reads = now;
      }
      task_.tally.Expect(check, TimeOf(after_) == time, "its time was not stored");
      task_.tally.Expect(check, time < 1 || now == reads,
                         fmt::format("it read {} parameters, the second one {}", now, reads));
      const Known& alone = Alone(time);
      task_.tally.Expect(check, picture == alone.picture, "not the frame that it is alone");
      task_.tally.Expect(check, after_ == alone.record, "not the record that it leaves alone");
    }
  }

  // With this record in place of what the frame at time 2 left.  A record of the frame before is continued,
  // whatever its sums; all others count for nothing.
  void After(Tally::Check check, const InstanceRecord& record, std::int32_t time) {
    minihost::Instance instance = subject_.Make(kLook);
    subject_.host.Reset();
    WatchRecord();
    subject_.host.before = [&](const CommandView& command) {
      if (command.number != PF_Cmd_SMART_RENDER && command.out.sequence_data != nullptr) {
        WriteRecord(command.out.sequence_data, record);
      }
      return LyingHost::Pass::kOn;
    };
    const PF_Err code = instance.Render(stage_.Begin(protocol_, time)).err;
    subject_.host.Reset();
    task_.tally.Expect(check, code == PF_Err_NONE, fmt::format("returned {}", code));
    const std::string damage = Damage(stage_);
    task_.tally.Expect(check, damage.empty(), damage);
    if (TimeOf(record) != time - 1) {
      const Known& alone = Alone(time);
      task_.tally.Expect(check, stage_.output.HasPixels(alone.picture) && after_ == alone.record,
                         "a record of another frame moved something");
    }
    task_.tally.Expect(check, TimeOf(after_) == time, "its time was not stored");
  }

  void BitFlips(Tally::Check check) {
    const InstanceRecord kept = Alone(2).record;
    for (std::size_t bit = 0; bit < kRecordBytes * 8; ++bit) {
      InstanceRecord flipped = kept;
      flipped[bit / 8] ^= std::byte(1 << bit % 8);
      for (const std::int32_t time : {3, 2, 7}) {
        task_.tally.Try(check, "{}: bit {} flipped, then frame {}", name_, bit, time);
        After(check, flipped, time);
      }
    }
  }

  void RandomBytes(Tally::Check check, std::uint64_t count) {
    Random random(task_.seed);
    for (std::uint64_t i = 0; i < count; ++i) {
      InstanceRecord record;
      for (std::byte& byte : record) {
        byte = std::byte(random.Next() & 0xFF);
      }
      const auto time = static_cast<std::int32_t>(random.Below(12));
      if (random.OneIn(2)) {
        const std::int32_t before = time - 1;
        std::memcpy(record.data(), &before, sizeof before);
      }
      task_.tally.Try(check, "{}: record {} of seed {}, then frame {}", name_, i, task_.seed, time);
      After(check, record, time);
    }
  }

  // Before each command in another block, and the old one gone.
  void Copies(Tally::Check check) {
    minihost::Instance instance = subject_.Make(kLook);
    subject_.host.before = [](const CommandView& command) {
      if (command.out.sequence_data != nullptr) {
        const PF_Handle copy = command.in.utils->host_new_handle(kRecordBytes);
        std::memcpy(*copy, *command.out.sequence_data, kRecordBytes);
        std::memset(*command.out.sequence_data, 0xFF, kRecordBytes);
        command.in.utils->host_dispose_handle(std::exchange(command.out.sequence_data, copy));
      }
      return LyingHost::Pass::kOn;
    };
    for (std::int32_t time = 0; time < 12; ++time) {
      task_.tally.Try(check, "{}: frame {} with a copy of the record", name_, time);
      task_.tally.Expect(check, stage_.Render(instance, stage_.Begin(protocol_, time)) == Alone(time).picture,
                         "not the frame that it is alone");
    }
    subject_.host.before = nullptr;
  }

  // Canceled before its sums are known, a frame leaves the record as it was.
  void Canceled(Tally::Check check) {
    minihost::Instance instance = subject_.Make(kLook);
    stage_.Render(instance, stage_.Begin(protocol_, 2));
    for (const std::int32_t time : {3, 9, 2}) {
      task_.tally.Try(check, "{}: frame {} aborted after frame 2", name_, time);
      subject_.host.Reset();
      subject_.host.Tell({Entry::kAbort, 1, true, Lie::kError});
      WatchRecord();
      instance.Render(stage_.Begin(protocol_, time));
      task_.tally.Expect(check, after_ == Alone(2).record, "the record changed");
    }
    subject_.host.Reset();
  }

 private:
  struct Known {
    std::vector<std::byte> picture;
    InstanceRecord record;
  };

  void WatchRecord() {
    subject_.host.after = [this](const CommandView& command, PF_Err) {
      if (command.out.sequence_data != nullptr) {
        after_ = ReadRecord(command.out.sequence_data);
      }
    };
  }

  // A frame of a fresh instance.
  const Known& Alone(std::int32_t time) {
    const auto found = alone_.find(time);
    if (found != alone_.end()) {
      return found->second;
    }
    Stage stage({.width = 24, .height = 18, .depth = stage_.output.Picture().PixelDepth(), .padding = 1});
    const InstanceRecord kept = after_;
    const auto before = std::exchange(subject_.host.before, nullptr);
    const auto after = std::exchange(subject_.host.after, nullptr);
    minihost::Instance instance = subject_.Make(kLook);
    WatchRecord();
    Known known{stage.Render(instance, stage.Begin(protocol_, time)), after_};
    subject_.host.before = before;
    subject_.host.after = after;
    after_ = kept;
    return alone_.emplace(time, std::move(known)).first->second;
  }

  static inline const Subject::Numbers kLook{
      {"Flakes", 30}, {"Size", 6}, {"Scene Depth", 300}, {"Wind", 7}, {"Speed", 130}};

  const LevelTask& task_;
  Subject& subject_;
  minihost::Protocol protocol_;
  Stage stage_;
  std::string name_;
  InstanceRecord after_{};
  std::map<std::int32_t, Known> alone_;
};

}  // namespace

void CheckState(const LevelTask& task) {
  Subject subject(task.module);
  const Tally::Check sequence = task.tally.Begin("frames in sequence", "frames");
  const Tally::Check flips = task.tally.Begin("each bit of the record flipped", "records");
  const Tally::Check bytes = task.tally.Begin("random bytes in the record's place", "records");
  const Tally::Check copies = task.tally.Begin("the record copied between commands", "frames");
  const Tally::Check canceled = task.tally.Begin("the record after an abort", "frames");
  for (const minihost::Depth depth : kDepths) {
    for (const minihost::Protocol protocol : kProtocols) {
      States states(task, subject, depth, protocol);
      states.InSequence(sequence);
      states.BitFlips(flips);
      states.RandomBytes(bytes, task.Tries(5000));
      states.Copies(copies);
      states.Canceled(canceled);
    }
  }
}

}  // namespace cli::check
