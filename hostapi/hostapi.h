// The language between the effect and its host: every record, callback, suite and number that passes between
// them.  A host includes this header alone.
#pragma once

#include "hostapi/callbacks.h"
#include "hostapi/commands.h"
#include "hostapi/params.h"
#include "hostapi/smart_render.h"
#include "hostapi/suites.h"
#include "hostapi/types.h"
#include "hostapi/worlds.h"
