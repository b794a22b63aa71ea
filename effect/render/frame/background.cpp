#include "effect/render/frame/background.h"

#include "effect/render/frame/sequence_state.h"

namespace {

PF_Err ClearOutput(const Fxenv& env) {
  return env.inData->utils->fill(env.inData->effect_ref, nullptr, nullptr, env.output);
}

}  // namespace

PF_Err EnsureSequenceState(const Fxenv& env) {
  if (const PF_Err error = SequenceSetup(env.inData, env.outData); error != PF_Err_NONE) {
    return ClearOutput(env) | error;
  }
  return PF_Err_NONE;
}

PF_Err PrepareBackground(const Fxenv& env, FrameField& frame) {
  if (frame.compositeWithOriginal) {
    const PF_LRect& shown = env.output->extent_hint;
    return env.inData->utils->copy(env.inData->effect_ref, env.input, env.output, &shown, &shown);
  }
  const PF_Err error = ClearOutput(env);
  frame.embedDepth = 1.0;
  return error;
}
