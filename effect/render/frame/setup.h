// The setup of one frame: from the host's records to a filled frame record and a prepared output.
#pragma once

#include <optional>

#include "effect/host/fxenv.h"
#include "effect/host/new_world.h"
#include "effect/render/frame/record.h"

/// Fills a record that has its scale and `inData`.  `light` comes to own the reduced copy of the layer that
/// the record then borrows.  Nothing is returned when there are flakes to draw; otherwise the status that
/// ends the pass, 0 where the background is the whole picture.  The statuses are those of RenderThisSmart.
template <class T>
std::optional<PF_Err> SetUpFrame(Fxenv& env, FX_NewWorld& light, FrameSetup<T>& frame);

extern template std::optional<PF_Err> SetUpFrame(Fxenv&, FX_NewWorld&, FrameSetup<PF_Pixel>&);
extern template std::optional<PF_Err> SetUpFrame(Fxenv&, FX_NewWorld&, FrameSetup<PF_Pixel16>&);
extern template std::optional<PF_Err> SetUpFrame(Fxenv&, FX_NewWorld&, FrameSetup<PF_PixelFloat>&);
