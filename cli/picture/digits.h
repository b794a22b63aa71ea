// Whole numbers drawn into a picture.
#pragma once

#include <cstdint>

#include "hostapi/types.h"
#include "hostapi/worlds.h"

namespace cli {

/// In units of a digit's dot; `scale`, 1 or more, makes a dot as many pixels wide and high.
inline constexpr int kDigitHeight = 7;

/// Draws the digits, and a minus sign where there is one, with their top left corner at this place of an
/// 8-bit world.  What lies outside of the world is left out; what is between the dots stays as it was.
void DrawNumber(std::int32_t number, int left, int top, int scale, const PF_Pixel& color,
                const PF_LayerDef& world);

}  // namespace cli
