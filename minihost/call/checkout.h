// Parameter definitions as they stand at a time, the value in them.
#pragma once

#include <cstdint>
#include <vector>

#include "hostapi/params.h"
#include "minihost/call/command.h"

namespace minihost {

/// `index` is inside the definitions.  Group marks come as declared, the layer with the scene's input.
PF_ParamDef DefinitionAt(const Session& session, const CommandScene& scene, int index, double layerFrame);

/// All of them, for the array that comes with a command.
std::vector<PF_ParamDef> DefinitionsAt(const Session& session, const CommandScene& scene, double layerFrame);

/// The array of addresses that commands come with.
std::vector<PF_ParamDef*> AddressesOf(std::vector<PF_ParamDef>& definitions);

/// The layer frame at `ticks` of `timeScale` a second: ticks / |local time step|, converted when the scene
/// counts in another scale.  A layer whose frames last no time has frame 0 alone.
double LayerFrameAt(const CommandScene& scene, std::int32_t ticks, std::uint32_t timeScale) noexcept;

}  // namespace minihost
