// The faults of the commands that render nothing.
#pragma once

#include <array>

#include "cli/check/host/entry.h"
#include "cli/check/level.h"

namespace cli::check {

/// `checks` are those of each entry.
void CheckCommandFaults(const LevelTask& task, Subject& subject,
                        const std::array<Tally::Check, kEntryCount>& checks);

}  // namespace cli::check
