// What the effect promises for each way that its host can fail it.
#pragma once

#include <cstddef>
#include <span>

#include "cli/check/host/entry.h"
#include "cli/check/scenario.h"

namespace cli::check {

/// What the output is to hold.
enum class Shows {
  kWhole,       // the frame as if nothing had happened
  kUntouched,   // what was there before
  kBackground,  // the layer, or transparent black
  kCleared,     // transparent black
  kAny,         // some of the flakes, or others
};

struct Promise {
  PF_Err code = PF_Err_NONE;
  Shows shows = Shows::kWhole;
  /// A float picture in a host that cannot say so: nothing but the picture's borders can be held.
  bool isUnknowable = false;
};

/// One frame without a fault: the calls it makes, and what is behind it.
struct CleanFrame {
  const Scenario& scenario;
  minihost::Depth depth;
  std::span<const HostCall> calls;
};

/// For a render command, or both of a smart one, with this fault in it.
Promise PromiseOf(const CleanFrame& frame, const Fault& fault);

}  // namespace cli::check
