// One use of an effect on one layer: it keeps the parameters and the effect's memory between frames.
#pragma once

#include <memory>

#include "minihost/effect.h"
#include "minihost/faults.h"
#include "minihost/frame.h"
#include "minihost/ledger.h"
#include "minihost/parameter/set.h"

namespace minihost {

enum class UiEvent {
  kUserChangedParameter,  // PF_Cmd_USER_CHANGED_PARAM
  kUpdate,                // PF_Cmd_UPDATE_PARAMS_UI
};

/// May be handed from thread to thread, but runs one command at a time (a second one at the same moment
/// throws std::logic_error); different instances run at the same time without knowing of each other.
/// After a move the source can only be assigned to or destroyed.
class Instance {
 public:
  /// Runs the sequence set-up.  Throws EffectError, with the effect's code and message, when it fails, and
  /// std::invalid_argument when `parameters` belong to another effect.
  Instance(std::shared_ptr<const Effect> effect, ParameterSet parameters, Faults faults = {});

  /// With every parameter at its default.
  explicit Instance(const std::shared_ptr<const Effect>& effect);

  Instance(Instance&&) noexcept;
  Instance& operator=(Instance&&) noexcept;

  /// Closes, if that has not happened.
  ~Instance();

  /// Lives as long as the instance, and changes with SetParameters.
  const ParameterSet& Parameters() const noexcept;

  /// Takes effect with the next command.  Throws std::invalid_argument when they belong to another effect.
  void SetParameters(ParameterSet parameters);

  /// Renders one frame.  Throws std::invalid_argument for a frame that cannot be asked for (no output, sizes
  /// or depths that do not fit, a tile outside the layer), naming what and the limit, and passes on what a
  /// hook throws.  All else is in the result.  On an error the output's pixels are undefined.
  RenderResult Render(const Frame& frame);

  /// Lets the effect bring the look of its parameters up to date, with the values at this layer frame.
  /// Points come in percent, there being no picture.
  CommandResult UpdateParamsUi(UiEvent event, double layerFrame = 0);

  /// Whether the effect has greyed this parameter out.  Throws std::out_of_range for an index that no
  /// parameter has.
  bool IsDisabled(int index) const;

  /// Sends a command that comes without parameters, pictures and extra record, such as the sequence
  /// commands.  Throws std::invalid_argument for those that need them.
  CommandResult Send(PF_Cmd command);

  /// Runs the sequence set-down.  Afterwards only HostLedger may be called.  Does nothing the second time.
  CommandResult Close();

  /// What is lent still, and what the effect did against the rules.  Read it between commands.
  const Ledger& HostLedger() const noexcept;

  /// Services to refuse from now on, their calls counted from 1 again.
  void SetFaults(Faults faults);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace minihost
