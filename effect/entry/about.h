// What the effect says of itself.
#pragma once

#include <cstdint>

#include "hostapi/commands.h"

/// The host's packed version word: version 1, release.
inline constexpr std::uint32_t kPackedVersion = 0x80600;

/// Puts the about text before whatever `return_msg` holds, cut at 255 characters, with a carriage return
/// between lines.
void ComposeAboutText(const PF_InData* in_data, PF_OutData* out_data);
