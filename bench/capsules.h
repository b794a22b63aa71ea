// A frame's flakes as capsules: round-ended strokes of one colour, for 2D libraries to draw.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "effect/render/frame/record.h"

/// Points in pixels, on which the effect judges the pixels' corners; a library that judges their middles
/// needs half a pixel more.
struct Capsule {
  float startX;
  float startY;
  float endX;
  float endY;
  float radius;  // at least 1
  float red;     // 0..1
  float green;
  float blue;
  float alpha;  // in the middle; the effect fades from there to the rim, a stroke is even
};

/// By the plain field and shading, in the flakes' order.
std::vector<Capsule> CapsulesOf(const FrameSetup<PF_Pixel>& frame);

/// Writes the width and height and then the capsules, all as 32-bit floats of the machine.  Throws
/// std::runtime_error when the file cannot be written.
void WriteCapsules(const std::string& file, int width, int height, const std::vector<Capsule>& capsules);
