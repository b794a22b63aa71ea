// How the effect's controls follow each other in the host's interface.
#pragma once

#include "effect/host/fxenv.h"

/// Greys out "Embed Depth %" exactly while "Composite With Original" is off, when nothing lies there to go
/// behind.  Returns the host's status of the update; no value changes.
PF_Err UpdateEmbedDepthUi(Fxenv& env);
