// Services that this host is told to refuse, so that an effect's failure paths can be walked in a test.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hostapi/types.h"

namespace minihost {

enum class Service {
  kAddParam,
  kCheckoutParam,
  kNewHandle,     // by callback or by suite; refused with null, whatever the code
  kLockHandle,    // refused with null
  kNewWorld,      // of either version
  kDisposeWorld,  // the world is disposed of all the same
  kPixelFormat,
  kFill,
  kCopy,
  kSubpixelSample,
  kUpdateParamUi,
  kCheckoutLayer,
  kCheckoutLayerPixels,
  kCheckoutOutput,
};
inline constexpr int kServiceCount = static_cast<int>(Service::kCheckoutOutput) + 1;

/// Calls of a service that fail.
struct Refusal {
  static constexpr std::uint64_t kEveryCall = 0;

  Service service = Service::kAddParam;
  /// Which call to refuse, counted from 1 since the faults were set, or kEveryCall.
  std::uint64_t call = kEveryCall;
  /// What the refused call returns.  0 is a host that claims success and hands out nothing: no world, no
  /// format, no definition.
  PF_Err err = PF_Err_OUT_OF_MEMORY;
};

/// A suite that the host has not got: acquiring it fails.
struct MissingSuite {
  std::string name;
  std::int32_t version = 1;
};

/// All that the host is to withhold.  As it stands, nothing.
struct Faults {
  std::vector<MissingSuite> missingSuites;
  std::vector<Refusal> refusals;
  /// A host without handle callbacks: both function pointers are null.  The handle suite is not affected.
  bool noHandleCallbacks = false;
  /// A host without a basic suite: `pica_basicP` is null.
  bool noBasicSuite = false;
};

}  // namespace minihost
