// Relocatable blocks for a host that lends none.
#pragma once

#include <cstdint>

#include "hostapi/types.h"

/// A block of `size` bytes that the host can store like one of its own; null when there is no memory.
PF_Handle NewHandle(std::uint32_t size);

/// Frees a block made by NewHandle.
void DisposeHandle(PF_Handle handle);
