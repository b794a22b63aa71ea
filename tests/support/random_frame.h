// Filled frame records on a host of their own, over the whole range of every parameter.
//
// For tests that hold one form of the flake loop against another: give both the record of the same seed, and
// compare pixels, guards, statuses and the host's calls.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "effect/host/parameter_readers.h"
#include "effect/render/frame_setup.h"
#include "tests/support/guarded_world.h"

/// One frame's parameters as a user sets them (percentages 0..100), and the motion up to it.
struct SnowLook {
  double flakes = 0, size = 0, sizeVariation = 0, sceneDepth = 0;
  double speedVariation = 0, windVariation = 0, spreadDegrees = 0;
  double amount = 0, amountEnd = 0, amountVariation = 0, frequencyVariation = 0, flatness = 0;
  bool stochastic = false;
  PF_Pixel color{};
  double opacity = 0, influence = 0, spreadWidth = 0, spreadHeight = 0;
  std::int32_t transferMode = 0;
  bool compositeWithOriginal = false;
  DoublePoint offset{}, offsetEnd{};  // render pixels
  double groundLevel = 0, embedDepth = 0;
  std::int32_t randomSeed = 0;
  double speedSum = 0, windSum = 0, frequencySum = 0;  // of one sample for each layer frame
  double speedEnd = 0, windEnd = 0, frequencyEnd = 0;  // rates when the shutter closes
  double extentWidth = 0, extentHeight = 0;            // of the whole layer, render pixels
  double tileX = 0, tileY = 0;                         // of the output's corner in it
};

/// Fills everything but `noiseTable`, the worlds and the sampler, written down apart from the effect's own
/// set-up.  `record.inData` brings times, shutter and ratios.
template <class T>
void FillRecord(const SnowLook& look, FrameSetup<T>& record);

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
  bool samplesInside = true;                      // no sample was asked for outside the image
};

/// The nearest pixel of the image, also when the answer is an error.
template <class T>
PF_Err SampleNearestMock(PF_ProgPtr host, PF_Fixed x, PF_Fixed y, const PF_SampPB* params, T* dst);

/// Covers flake counts at both sides of a report, sizes below and above a unit, odd worlds with padded and
/// guarded rows, tiles, downsampling, pixel aspect, transparent and half-transparent layers, travel far
/// outside the layer, each kind of wiggle and none.  One in 16 frames is `broken`.
template <class T>
class RandomFrame {
 public:
  explicit RandomFrame(std::uint32_t seed);

  FrameSetup<T>& Record() { return record_; }
  FrameHost& Host() { return host_; }
  const SnowLook& Look() const { return look_; }
  GuardedWorld<T>& Output() { return output_; }
  GuardedWorld<T>& Illumination() { return illumination_; }

  /// A ratio or a distance is not a number one can draw with: the picture must stay as it is.
  bool Broken() const { return broken_; }

  /// The background of this seed again, and no call made yet.
  void Reset();

 private:
  std::uint32_t seed_;
  FrameHost host_;
  SnowLook look_;
  bool broken_;
  FrameSetup<T> record_;
  GuardedWorld<T> output_;
  GuardedWorld<T> illumination_;
};

extern template class RandomFrame<PF_Pixel>;
extern template class RandomFrame<PF_Pixel16>;
extern template class RandomFrame<PF_PixelFloat>;
