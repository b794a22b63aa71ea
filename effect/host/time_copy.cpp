#include "effect/host/time_copy.h"

TimeCopy FX_CopyTimeA(const PF_InData* in_data) {
  TimeCopy time = {};
  time.renderTime = in_data->current_time;
  time.timeScale = in_data->time_scale;
  time.timeStep = in_data->time_step;
  time.localTimeStep = in_data->local_time_step;
  time.shutterAngle = in_data->shutter_angle * 1.52587890625e-05;  // 1 / 65536

  // In 64 bits, where the least time over a step of -1 does not overflow.
  const std::int64_t render = time.renderTime;
  const std::int64_t fraction = time.localTimeStep == 0 ? render : render % time.localTimeStep;
  time.wholeTime = static_cast<std::int32_t>(render - fraction);
  time.fracTime = static_cast<std::int32_t>(fraction);
  time.frameFraction = static_cast<double>(time.fracTime) / static_cast<double>(time.localTimeStep);
  return time;
}
