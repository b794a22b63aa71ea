#include "cli/check/host/lying_host.h"

#include <algorithm>
#include <limits>

#include "cli/check/host/allocation.h"
#include "cli/check/host/tables.h"

namespace cli::check {
namespace {

LyingHost* current = nullptr;

// Wrong for one number that nobody draws with, and the first that a doubtful effect would try: an effect that
// wants correctly rounded roots has to do without them here.
double DoubtfulRoot(double square) {
  ++current->rootsTaken;
  constexpr double kDoubtful = 1.0 + std::numeric_limits<double>::epsilon();
  return square == kDoubtful ? kDoubtful : std::sqrt(square);
}

double RightRoot(double square) {
  ++current->rootsTaken;
  return std::sqrt(square);
}

// The effect's own side of a command.
class EffectSide {
 public:
  EffectSide() { Allocations().isCounting = true; }
  ~EffectSide() { Allocations().isCounting = false; }
  EffectSide(const EffectSide&) = delete;
  EffectSide& operator=(const EffectSide&) = delete;
};

// Puts the functions of this room into a smart render's extra record, and minihost's back.
template <class Callbacks>
class ExtraCallbacks {
 public:
  ExtraCallbacks(Callbacks*& place, Callbacks& ours) : place_(place), theirs_(place) { place = &ours; }
  ~ExtraCallbacks() { place_ = theirs_; }
  ExtraCallbacks(const ExtraCallbacks&) = delete;
  ExtraCallbacks& operator=(const ExtraCallbacks&) = delete;

 private:
  Callbacks*& place_;
  Callbacks* theirs_;
};

PF_Err HandOn(minihost::EntryPoint target, const CommandView& command, PF_ParamDef* params[]) {
  const auto run = [&] {
    const EffectSide side;
    return target(command.number, &command.in, &command.out, params, command.output, command.extra);
  };
  if (command.number == PF_Cmd_SMART_PRE_RENDER) {
    PF_PreRenderCallbacks ours = PreRenderCallbacks(*command.PreRender().cb);
    const ExtraCallbacks<PF_PreRenderCallbacks> extra(command.PreRender().cb, ours);
    return run();
  }
  if (command.number == PF_Cmd_SMART_RENDER) {
    PF_SmartRenderCallbacks ours = SmartRenderCallbacks(*command.SmartRender().cb);
    const ExtraCallbacks<PF_SmartRenderCallbacks> extra(command.SmartRender().cb, ours);
    return run();
  }
  return run();
}

minihost::EntryPoint currentTarget = nullptr;

}  // namespace

LyingHost::LyingHost(minihost::EntryPoint target) {
  current = this;
  currentTarget = target;
  Reset();
}

LyingHost::~LyingHost() {
  Reset();
  current = nullptr;
}

PF_Err LyingHost::Run(PF_Cmd cmd, PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* params[],
                      PF_LayerDef* output, void* extra) {
  LyingHost& host = *current;
  PF_InData in = *in_data;
  PF_UtilCallbacks utils = *in_data->utils;
  DecorateRecords(host, in, utils);
  in.utils = &utils;
  utils.ansi.sqrt = host.root == Root::kRight ? RightRoot : DoubtfulRoot;
  const bool keepsNew = host.handles == Handles::kLent || host.handles == Handles::kOnlyNew;
  const bool keepsDispose = host.handles == Handles::kLent || host.handles == Handles::kOnlyDispose;
  utils.host_new_handle = keepsNew ? utils.host_new_handle : nullptr;
  utils.host_dispose_handle = keepsDispose ? utils.host_dispose_handle : nullptr;

  const CommandView command{cmd, in, *out_data, output, extra};
  if (host.before && host.before(command) == Pass::kHold) {
    return PF_Err_NONE;
  }
  const PF_Err err = HandOn(currentTarget, command, params);
  if (host.after) {
    host.after(command, err);
  }
  return err;
}

void LyingHost::Reset() {
  ResetCalls();
  Allocations() = {};
  isRecording = false;
  record.clear();
  before = nullptr;
  after = nullptr;
  onParameter = nullptr;
  onLayer = nullptr;
  root = Root::kRight;
  rootsTaken = 0;
  handles = Handles::kLent;
}

void LyingHost::Tell(const Fault& fault) {
  if (fault.entry == Entry::kOperatorNew) {
    AllocationWatch& watch = Allocations();
    watch.refuseFirst = watch.count + fault.call;
    watch.refuseLast = fault.fromThenOn ? std::numeric_limits<std::uint64_t>::max() : watch.refuseFirst;
    watch.refused = 0;
  } else {
    PlanLie(fault);
  }
}

std::uint64_t LyingHost::Told() const {
  return LiesTold() + Allocations().refused;
}

std::uint64_t LyingHost::Calls(Entry entry) const {
  return entry == Entry::kOperatorNew ? Allocations().count : CallsOf(entry);
}

}  // namespace cli::check
