// The services that this host lends by name and version.
#pragma once

#include "hostapi/suites.h"

namespace minihost {

extern const SPBasicSuite kBasicSuite;

}  // namespace minihost
