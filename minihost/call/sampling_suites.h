// Sampling as suites.  The refusing ones look at the fault plan with every call; the plain ones do not even
// look for their command, because an effect samples once for each thing it draws.
#pragma once

#include "hostapi/suites.h"

namespace minihost {

extern const PF_Sampling8Suite1 kSampling8Suite, kRefusingSampling8Suite;
extern const PF_Sampling16Suite1 kSampling16Suite, kRefusingSampling16Suite;
extern const PF_SamplingFloatSuite1 kSamplingFloatSuite, kRefusingSamplingFloatSuite;

}  // namespace minihost
