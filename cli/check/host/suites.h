// The basic suite and the suites that it lends, decorated.
#pragma once

#include "hostapi/suites.h"

namespace cli::check {

/// Ours in the place of `theirs`, which is null where the host has none; then there is none here either.
const SPBasicSuite* BasicSuite(const SPBasicSuite* theirs) noexcept;

}  // namespace cli::check
