// One command on its way through the effect: everything that a callback needs to answer.
#pragma once

#include <cstdint>
#include <exception>
#include <utility>
#include <vector>

#include "hostapi/commands.h"
#include "minihost/call/fault_plan.h"
#include "minihost/call/handles.h"
#include "minihost/call/worlds.h"
#include "minihost/effect.h"
#include "minihost/frame.h"
#include "minihost/ledger.h"
#include "minihost/parameter/set.h"

namespace minihost {

struct SmartFrame;

/// What lasts from command to command: of one instance, or of an effect's own set-up.
struct Session {
  explicit Session(Faults faultsToMake) : faults(std::move(faultsToMake)) {}

  Ledger ledger;
  HandleTable handles;
  WorldTable worlds;
  FaultPlan faults;
  PF_Handle sequenceData = nullptr;  // the effect's; kept by the host between commands

  /// The parameters' definitions with the look that the effect gave them last; element 0 is the input layer.
  /// Empty during the effect's own set-up.
  std::vector<PF_ParamDef> definitions;
};

/// The scene of one command.  What a command has not got stays null.
struct CommandScene {
  std::int32_t time = 0;
  FrameTiming timing;
  PF_RationalScale downsampleX{1, 1};
  PF_RationalScale downsampleY{1, 1};
  PF_RationalScale pixelAspectRatio{1, 1};

  const ParameterSet* parameters = nullptr;
  /// The layer's size in render pixels, which 100 percent of a point stands for.
  double layerWidth = 100;
  double layerHeight = 100;
  PF_LayerDef input{};  // the plain protocol's input layer

  const RenderHooks* hooks = nullptr;
  SmartFrame* smart = nullptr;
  std::vector<PF_ParamDef>* declarations = nullptr;  // where add_param goes
};

/// While it lives it is the current command of its thread, which is how callbacks that come without a
/// reference find it.  Commands nest: a hook may drive another instance.
class Command {
 public:
  Command(Session& owner, const CommandScene& what) noexcept;
  ~Command();
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;

  /// The innermost command of this thread; null outside of commands.
  static Command* Current() noexcept;

  /// The current command if `effect_ref` is its name; null, and a fault in its ledger, if it is not.
  static Command* Named(PF_ProgPtr effect_ref) noexcept;

  /// The records that every command comes with.
  PF_InData& InData() noexcept { return inData_; }
  PF_OutData& OutData() noexcept { return outData_; }

  /// Hands the command to the effect, and takes over its sequence data and its message.
  CommandResult Run(EntryPoint entry, PF_Cmd number, PF_ParamDef* params[], PF_LayerDef* output, void* extra);

  Session& session;
  const CommandScene& scene;
  std::exception_ptr hookFailure;  // what the first hook that failed threw

 private:
  Command* outer_;
  PF_UtilCallbacks utils_;
  PF_InData inData_{};
  PF_OutData outData_{};
};

/// Throws EffectError, with the effect's code and message, for a result that is an error.  `command` names it
/// to the user, such as "sequence set-up".
void RequireSuccess(const CommandResult& result, const char* command);

}  // namespace minihost
