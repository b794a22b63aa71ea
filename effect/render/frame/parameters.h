// The times and parameters of one frame, read from the host into the frame record.
#pragma once

#include "effect/host/parameter_readers.h"
#include "effect/render/frame/record.h"

/// Parameters that take the frame's geometry before they can go into the record.
struct ViewSamples {
  double spreadDegrees;
  DoublePoint offset;     // when the shutter opens, in render pixels
  DoublePoint offsetEnd;  // when it closes
};

/// Sets the record's times: the shutter closes shutterAngle frames after the render time, a whole frame when
/// the host gives no angle.  A time scale of 0 leaves seconds that are no numbers.
void ReadTimes(FrameField& frame);

/// Fills the record's parameter fields, all at the render time but for Amount and Offset, which are read
/// again when the shutter closes.  Speed, Wind and Frequency belong to the motion, Color to the pixel type.
ViewSamples ReadParameters(FrameField& frame);

/// Color at the render time, opaque.
PF_Pixel ReadColor(const FrameField& frame);

/// The host's shutter angle as a fraction of a frame (1.0 is 360 degrees), or a whole frame for 0 and less.
double ShutterFraction(const PF_InData* in_data);
