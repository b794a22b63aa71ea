#include "minihost/call/command.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "minihost/call/answer.h"
#include "minihost/call/callbacks.h"
#include "minihost/call/suites.h"

namespace minihost {
namespace {

thread_local Command* current = nullptr;

// 16.16 of a full turn; what does not fit, and what is no number, ends at the limits or at 0.
PF_Fixed ShutterAngle(double degrees) noexcept {
  constexpr double kLow = std::numeric_limits<PF_Fixed>::min();
  constexpr double kHigh = std::numeric_limits<PF_Fixed>::max();
  if (std::isnan(degrees)) {
    return 0;
  }
  return static_cast<PF_Fixed>(std::clamp(std::round(degrees / 360 * 65536), kLow, kHigh));
}

std::string MessageOf(const PF_OutData& outData) {
  std::string message(outData.return_msg, strnlen(outData.return_msg, sizeof outData.return_msg));
  std::replace(message.begin(), message.end(), '\r', '\n');
  return message;
}

}  // namespace

Command::Command(Session& owner, const CommandScene& what) noexcept
    : session(owner),
      scene(what),
      outer_(std::exchange(current, this)),
      utils_(UtilCallbacks(owner.faults.NoHandleCallbacks() ? HandleCallbacks::kMissing
                                                            : HandleCallbacks::kOffered)) {
  inData_.inter = kInteractCallbacks;
  inData_.utils = &utils_;
  inData_.effect_ref = this;
  inData_.pica_basicP = owner.faults.NoBasicSuite() ? nullptr : &kBasicSuite;
  inData_.current_time = what.time;
  inData_.time_step = what.timing.timeStep;
  inData_.local_time_step = what.timing.localTimeStep;
  inData_.time_scale = what.timing.timeScale;
  inData_.shutter_angle = ShutterAngle(what.timing.shutterDegrees);
  inData_.downsample_x = what.downsampleX;
  inData_.downsample_y = what.downsampleY;
  inData_.pixel_aspect_ratio = what.pixelAspectRatio;
}

Command::~Command() {
  current = outer_;
}

Command* Command::Current() noexcept {
  return current;
}

Command* Command::Named(PF_ProgPtr effect_ref) noexcept {
  if (current == nullptr || effect_ref == current) {
    return current;
  }
  Answer(current, [](Command& command) {
    return AnswerToFault(command, "called back with an effect reference that is not this command's");
  });
  return nullptr;
}

CommandResult Command::Run(EntryPoint entry, PF_Cmd number, PF_ParamDef* params[], PF_LayerDef* output,
                           void* extra) {
  outData_.sequence_data = session.sequenceData;
  const PF_Err err = entry(number, &inData_, &outData_, params, output, extra);
  session.sequenceData = outData_.sequence_data;
  return {err, MessageOf(outData_)};
}

void RequireSuccess(const CommandResult& result, const char* command) {
  if (result.err == PF_Err_NONE) {
    return;
  }
  const std::string message = result.message.empty() ? "" : ": " + result.message;
  throw EffectError(
      "the effect's " + std::string(command) + " failed with code " + std::to_string(result.err) + message,
      result.err);
}

}  // namespace minihost
