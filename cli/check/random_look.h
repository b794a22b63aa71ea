// Parameters at random, all over what an effect declares.
#pragma once

#include "cli/check/random.h"
#include "minihost/parameter/set.h"

namespace cli::check {

/// Values in their valid ranges, ends among them; some with keys.  Of flakes there are at most `flakes`.
minihost::ParameterSet RandomLook(Random& random, const minihost::SharedParameterList& list, int flakes);

}  // namespace cli::check
