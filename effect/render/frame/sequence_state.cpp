#include "effect/render/frame/sequence_state.h"

#include <cstring>
#include <utility>

#include "effect/host/fallback_handle.h"

namespace {

// A block is disposed of by whoever made it, so one test chooses both halves.
bool LendsHandles(const PF_UtilCallbacks& utils) {
  return utils.host_new_handle != nullptr && utils.host_dispose_handle != nullptr;
}

}  // namespace

PF_Err SequenceSetup(PF_InData* in_data, PF_OutData* out_data) {
  if (out_data->sequence_data != nullptr) {
    return PF_Err_NONE;
  }
  const PF_UtilCallbacks& utils = *in_data->utils;
  out_data->sequence_data =
      LendsHandles(utils) ? utils.host_new_handle(sizeof(SequenceState)) : NewHandle(sizeof(SequenceState));
  if (out_data->sequence_data == nullptr) {
    utils.ansi.strcpy(out_data->return_msg, "Out of memory.. (1:1)");
    return kSequenceSetupOutOfMemory;
  }
  WriteSequenceState(out_data->sequence_data, SequenceState());
  return PF_Err_NONE;
}

PF_Err SequenceSetdown(PF_InData* in_data, PF_OutData* out_data) {
  const PF_Handle handle = std::exchange(out_data->sequence_data, nullptr);
  if (handle == nullptr) {
    return PF_Err_NONE;
  }
  const PF_UtilCallbacks& utils = *in_data->utils;
  if (LendsHandles(utils)) {
    utils.host_dispose_handle(handle);
  } else {
    DisposeHandle(handle);
  }
  return PF_Err_NONE;
}

SequenceState ReadSequenceState(PF_Handle handle) {
  SequenceState state;
  std::memcpy(&state, *handle, sizeof state);
  return state;
}

void WriteSequenceState(PF_Handle handle, const SequenceState& state) {
  std::memcpy(*handle, &state, sizeof state);
}
