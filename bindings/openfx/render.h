// One frame for a host of OpenFX.
#pragma once

#include "bindings/openfx/host.h"
#include "minihost/effect.h"

namespace openfx {

/// The effect, made when first asked for, for as long as the module is loaded.
const std::shared_ptr<const minihost::Effect>& TheEffect();

/// Renders as the arguments of the render action say.  For any number of threads at once.  Throws ActionError
/// and what minihost throws.
void Render(const Suites& suites, OfxImageEffectHandle effect, const Properties& arguments);

/// The next renders read all values again.
void NoteEdit();

/// What is kept of pictures between renders.
void FreeSpareMemory();

}  // namespace openfx
