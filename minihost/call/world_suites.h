// Images that the effect asks the host for.
#pragma once

#include "hostapi/suites.h"

namespace minihost {

extern const PF_WorldSuite1 kWorldSuite1;
extern const PF_WorldSuite2 kWorldSuite2;

}  // namespace minihost
