// Reads parameters at any time through the host's check-out.
//
// Each call is one check-out and one check-in; nothing is cached.  Times are ticks, `time_scale` ticks a
// second, `time_step` the caller's spacing between samples.  Where the host refuses the check-out a reader
// returns the parameter's declared default and checks nothing in, since no definition was lent.
#pragma once

#include <cstdint>

#include "hostapi/commands.h"

/// A point in the render's pixels (downsampled).
struct DoublePoint {
  double x;
  double y;
};

double Get_Float_Slider(PF_InData* in_data, int index, std::int32_t time, std::int32_t time_step,
                        std::uint32_t time_scale);

std::int32_t Get_Int_Slider(PF_InData* in_data, int index, std::int32_t time, std::int32_t time_step,
                            std::uint32_t time_scale);

/// The choice, counted from 1.
std::int32_t Get_PopUp(PF_InData* in_data, int index, std::int32_t time, std::int32_t time_step,
                       std::uint32_t time_scale);

bool Get_Checkbox(PF_InData* in_data, int index, std::int32_t time, std::int32_t time_step,
                  std::uint32_t time_scale);

/// Opaque, whatever alpha the host keeps with the colour.
PF_Pixel Get_Color(PF_InData* in_data, int index, std::int32_t time, std::int32_t time_step,
                   std::uint32_t time_scale);

/// The default of a refused point is its declared number on both axes: the reader knows no layer to take a
/// percentage of.
DoublePoint Get_Point(PF_InData* in_data, int index, std::int32_t time, std::int32_t time_step,
                      std::uint32_t time_scale);
