// The record that each instance of the effect keeps between frames: the motion integrals of its last render.
#pragma once

#include <cstdint>

#include "hostapi/commands.h"

/// Lives in the host's relocatable sequence-data handle, which promises no alignment; 28 bytes without
/// padding that hold no pointers, so a byte copy of the record is as good as the record.
struct __attribute__((packed)) SequenceState {
  std::int32_t cachedTime = -1;  // the render time, in ticks, that the sums belong to; -1: nothing cached
  double speedSum = 0.0;         // of one sample for each layer frame up to cachedTime
  double windSum = 0.0;
  double frequencySum = 0.0;
};

static_assert(sizeof(SequenceState) == 28);

/// Creates an empty record unless the instance has one.  Without memory: the status below, and a message to
/// the user in `return_msg`.
PF_Err SequenceSetup(PF_InData* in_data, PF_OutData* out_data);

inline constexpr PF_Err kSequenceSetupOutOfMemory = 517;

/// Frees the record, if there is one.  Always 0.
PF_Err SequenceSetdown(PF_InData* in_data, PF_OutData* out_data);

/// The record behind a handle that is not null.
SequenceState ReadSequenceState(PF_Handle handle);
void WriteSequenceState(PF_Handle handle, const SequenceState& state);
