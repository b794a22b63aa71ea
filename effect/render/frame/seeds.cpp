#include "effect/render/frame/seeds.h"

void SetSeeds(FrameField& frame) {
  constexpr std::int32_t kFlakeStream = 0x2db;
  constexpr std::int32_t kIlluminationStream = 0xc6b;
  constexpr std::int32_t kWiggleStream = 0x701;
  frame.flakeSeed = frame.randomSeed ^ kFlakeStream;
  frame.illumSeed = frame.randomSeed ^ kIlluminationStream;
  frame.wiggleSeed = frame.randomSeed ^ kWiggleStream;
}
