// Where the random streams of a frame start.
#pragma once

#include "effect/render/frame/record.h"

/// Sets the three start states from `randomSeed`; they are apart from each other for every seed.
void SetSeeds(FrameField& frame);
