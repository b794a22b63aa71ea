// Filled frame records on a host of their own, over the whole range of every parameter.
//
// For tests that hold one form of the flake loop against another: give both the record of the same seed, and
// compare pixels, guards, statuses and the host's calls.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <vector>

#include "effect/host/parameter_index.h"
#include "effect/host/parameter_readers.h"
#include "effect/render/frame/record.h"
#include "tests/support/guarded_world.h"

/// The values of sliders, choices and checkboxes, as a user sets them (percentages 0..100).
using SnowNumbers = std::map<ParameterIndex, double>;

/// One frame's parameters, and the motion up to it.
struct SnowLook {
  SnowNumbers open{}, close{};  // when the shutter opens and closes
  SnowNumbers sum{};            // Speed, Wind and Frequency: of one sample for each layer frame
  PF_Pixel color{};
  DoublePoint offset{}, offsetEnd{}, extent{};  // render pixels; the extent is the whole layer's
  DoublePoint tile{};                           // of the output's corner in it
};

/// Where random looks have the numbers `of` these parameters; half of them are at most `usual`.
struct SnowRange {
  double low, high, usual;
  std::vector<ParameterIndex> of;
};
extern const std::vector<SnowRange> kSnowRanges;

/// Fills all that the loop reads but the worlds and the sampler, written down apart from the effect's own
/// set-up.  `record.inData` brings times, shutter and ratios.
template <class T>
void FillRecord(SnowLook look, FrameSetup<T>& record);

/// What the loop asked of its host: a sample at (x, y) in 16.16, or a report of x steps of y.
struct HostCall {
  enum Kind { kSample, kProgress } kind;
  std::int32_t x, y;
  bool operator==(const HostCall&) const = default;
};

struct FrameHost {
  FrameHost();
  FrameHost(const FrameHost&) = delete;
  FrameHost& operator=(const FrameHost&) = delete;

  PF_UtilCallbacks utils{};
  PF_InData inData{};
  std::vector<HostCall> calls;
  std::function<PF_Err(const HostCall&)> answer;  // of each call; none: 0
};

/// Covers flake counts at both sides of a report, sizes below and above a unit, odd worlds with padded and
/// guarded rows, tiles, downsampling, pixel aspect, transparent and half-transparent layers, travel far
/// outside the layer, each kind of wiggle and none.  Samples are those of the nearest pixel, whatever the
/// host answers.
template <class T>
struct RandomFrame {
  explicit RandomFrame(std::uint32_t seed);

  /// The background of this seed again, and no call made yet.
  void Reset();

  const std::uint32_t seed;
  const bool broken;  // one in 16: a ratio or a distance is no number to draw with, the picture must stay
  FrameHost host;
  SnowLook look;
  FrameSetup<T> record;
  GuardedWorld<T> output, illumination;
};
