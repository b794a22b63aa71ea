// The host's tables of functions, with functions of this room in them that call the host's.
#pragma once

#include <cstdint>

#include "cli/check/host/entry.h"
#include "hostapi/hostapi.h"

namespace cli::check {

class LyingHost;

/// Puts ours in the place of theirs, and remembers theirs until the next command.
void DecorateRecords(LyingHost& host, PF_InData& in, PF_UtilCallbacks& utils);
PF_PreRenderCallbacks PreRenderCallbacks(const PF_PreRenderCallbacks& theirs);
PF_SmartRenderCallbacks SmartRenderCallbacks(const PF_SmartRenderCallbacks& theirs);

/// The counts and the plan behind them.
void ResetCalls();
void PlanLie(const Fault& fault);
std::uint64_t LiesTold();
std::uint64_t CallsOf(Entry entry);

}  // namespace cli::check
