#include "minihost/instance.h"

#include <atomic>
#include <stdexcept>
#include <utility>
#include <vector>

#include "minihost/call/checkout.h"
#include "minihost/call/command.h"
#include "minihost/call/frame_render.h"

namespace minihost {
namespace {

// Holds the instance for one command, so that a second one at the same moment is found out.
class Turn {
 public:
  explicit Turn(std::atomic_flag& busy) : busy_(busy) {
    if (busy_.test_and_set(std::memory_order_acquire)) {
      throw std::logic_error("an effect instance was given a command while it was running another");
    }
  }
  ~Turn() { busy_.clear(std::memory_order_release); }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

 private:
  std::atomic_flag& busy_;
};

// Commands that come with more than the two records, or that belong to the effect and not to an instance.
bool NeedsMoreThanRecords(PF_Cmd command) noexcept {
  switch (command) {
    case PF_Cmd_GLOBAL_SETUP:
    case PF_Cmd_GLOBAL_SETDOWN:
    case PF_Cmd_PARAMS_SETUP:
    case PF_Cmd_RENDER:
    case PF_Cmd_USER_CHANGED_PARAM:
    case PF_Cmd_UPDATE_PARAMS_UI:
    case PF_Cmd_SMART_PRE_RENDER:
    case PF_Cmd_SMART_RENDER:
      return true;
    default:
      return false;
  }
}

}  // namespace

struct Instance::State {
  State(std::shared_ptr<const Effect> theEffect, ParameterSet theParameters, Faults faults)
      : effect(std::move(theEffect)), parameters(std::move(theParameters)), session(std::move(faults)) {
    RequireOwn(parameters);
    session.definitions = effect->Definitions();
  }

  void RequireOwn(const ParameterSet& candidate) const {
    if (&candidate.List() != &effect->Parameters()) {
      throw std::invalid_argument("the parameters belong to another effect than the instance");
    }
  }

  // One command without pictures.
  CommandResult Run(PF_Cmd number, CommandScene scene, PF_ParamDef* params[]) {
    scene.parameters = &parameters;
    Command command(session, scene);
    CommandResult result = command.Run(effect->Entry(), number, params, nullptr, nullptr);
    session.handles.MoveUnlocked();
    session.ledger.SetKept({session.sequenceData, nullptr});
    return result;
  }

  void RequireOpen() const {
    if (closed) {
      throw std::logic_error("the effect instance is closed");
    }
  }

  std::shared_ptr<const Effect> effect;
  ParameterSet parameters;
  Session session;
  std::atomic_flag busy = ATOMIC_FLAG_INIT;
  bool closed = false;
};

Instance::Instance(std::shared_ptr<const Effect> effect, ParameterSet parameters, Faults faults)
    : state_(std::make_unique<State>(std::move(effect), std::move(parameters), std::move(faults))) {
  RequireSuccess(state_->Run(PF_Cmd_SEQUENCE_SETUP, {}, nullptr), "sequence set-up");
}

Instance::Instance(const std::shared_ptr<const Effect>& effect)
    : Instance(effect, ParameterSet(effect->SharedParameters())) {}

Instance::Instance(Instance&&) noexcept = default;

Instance& Instance::operator=(Instance&& other) noexcept {
  Instance old(std::move(*this));  // closes what stood here
  state_ = std::move(other.state_);
  return *this;
}

Instance::~Instance() {
  if (state_ == nullptr) {
    return;
  }
  try {
    Close();
  } catch (...) {  // out of memory for a message, or closed while running: nobody is left to tell
  }
}

const ParameterSet& Instance::Parameters() const noexcept {
  return state_->parameters;
}

void Instance::SetParameters(ParameterSet parameters) {
  const Turn turn(state_->busy);
  state_->RequireOwn(parameters);
  state_->parameters = std::move(parameters);
}

RenderResult Instance::Render(const Frame& frame) {
  const Turn turn(state_->busy);
  state_->RequireOpen();
  return RenderFrame(*state_->effect, state_->parameters, state_->session, frame);
}

CommandResult Instance::UpdateParamsUi(UiEvent event, double layerFrame) {
  const Turn turn(state_->busy);
  state_->RequireOpen();
  CommandScene scene;
  scene.parameters = &state_->parameters;
  std::vector<PF_ParamDef> definitions = DefinitionsAt(state_->session, scene, layerFrame);
  std::vector<PF_ParamDef*> params = AddressesOf(definitions);
  const PF_Cmd number = event == UiEvent::kUpdate ? PF_Cmd_UPDATE_PARAMS_UI : PF_Cmd_USER_CHANGED_PARAM;
  return state_->Run(number, scene, params.data());
}

bool Instance::IsDisabled(int index) const {
  return (state_->session.definitions.at(static_cast<std::size_t>(index)).ui_flags & PF_PUI_DISABLED) != 0;
}

CommandResult Instance::Send(PF_Cmd command) {
  const Turn turn(state_->busy);
  state_->RequireOpen();
  if (NeedsMoreThanRecords(command)) {
    throw std::invalid_argument("command " + std::to_string(command) + " cannot be sent by itself");
  }
  return state_->Run(command, {}, nullptr);
}

CommandResult Instance::Close() {
  const Turn turn(state_->busy);
  if (std::exchange(state_->closed, true)) {
    return {};
  }
  CommandResult result = state_->Run(PF_Cmd_SEQUENCE_SETDOWN, {}, nullptr);
  state_->session.ledger.SetKept({});  // nothing is kept for an instance that is over
  return result;
}

const Ledger& Instance::HostLedger() const noexcept {
  return state_->session.ledger;
}

void Instance::SetFaults(Faults faults) {
  const Turn turn(state_->busy);
  state_->session.faults = FaultPlan(std::move(faults));
}

}  // namespace minihost
