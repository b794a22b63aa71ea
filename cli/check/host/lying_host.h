// A host between the effect and minihost, which passes every call on, counts it, and lies where it is told
// to.
//
// To minihost it is the effect: it takes each command, puts functions of its own into the host's records, and
// hands the command on.  minihost's answers, its ledger and its rules stay what the effect meets.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "cli/check/host/entry.h"
#include "hostapi/hostapi.h"
#include "minihost/effect.h"

namespace cli::check {

/// A command as the effect gets it; what is changed here, it sees changed.
struct CommandView {
  PF_Cmd number;
  PF_InData& in;
  PF_OutData& out;
  PF_LayerDef* output;
  void* extra;

  PF_PreRenderExtra& PreRender() const { return *static_cast<PF_PreRenderExtra*>(extra); }
  PF_SmartRenderExtra& SmartRender() const { return *static_cast<PF_SmartRenderExtra*>(extra); }
};

/// One at a time, on one thread: the functions that an effect calls do not say which host they belong to.
class LyingHost {
 public:
  explicit LyingHost(minihost::EntryPoint target);
  ~LyingHost();
  LyingHost(const LyingHost&) = delete;
  LyingHost& operator=(const LyingHost&) = delete;

  /// What minihost takes for the effect's entry.
  static PF_Err Run(PF_Cmd cmd, PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* params[],
                    PF_LayerDef* output, void* extra);

  /// An honest host again, that has counted nothing.
  void Reset();

  /// Begins with the next call.
  void Tell(const Fault& fault);
  /// Calls that were answered with a lie.
  std::uint64_t Told() const;

  std::uint64_t Calls(Entry entry) const;

  /// Every call in its order, while this is on; but for `operator new`, which tells nobody when it is called.
  bool isRecording = false;
  std::vector<HostCall> record;

  /// Around each command.  `before` may say that the effect is not to have it; it is then answered with 0.
  enum class Pass { kOn, kHold };
  std::function<Pass(const CommandView&)> before;
  std::function<void(const CommandView&, PF_Err)> after;

  /// What a check-out hands out may be changed.
  std::function<void(std::int32_t index, std::int32_t time, PF_ParamDef&)> onParameter;

  /// What checkout_layer answers may be changed.
  std::function<void(PF_CheckoutResult&)> onLayer;

  /// The square root that the host lends, and how often it was taken.
  enum class Root { kRight, kDoubtful };
  Root root = Root::kRight;
  std::uint64_t rootsTaken = 0;

  enum class Handles { kLent, kNone, kOnlyNew, kOnlyDispose };
  Handles handles = Handles::kLent;  // the callbacks
};

}  // namespace cli::check
