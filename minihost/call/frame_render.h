// Driving the effect through one frame by either protocol.
#pragma once

#include "minihost/call/command.h"
#include "minihost/effect.h"
#include "minihost/frame.h"
#include "minihost/parameter/set.h"

namespace minihost {

/// As Instance::Render.
RenderResult RenderFrame(const Effect& effect, const ParameterSet& parameters, Session& session,
                         const Frame& frame);

}  // namespace minihost
