// A filled frame record on plain images: the snow of the default parameters, but for what a case changes.
#pragma once

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "effect/host/parameter_index.h"
#include "effect/render/frame/record.h"
#include "minihost/picture/image.h"

/// The frame after two seconds of snowfall at 24 frames a second.
struct Snow {
  /// Parameters that differ from their defaults.
  std::vector<std::pair<ParameterIndex, double>> numbers = {};
  int width = 1920;
  int height = 1080;
  double shutterDegrees = 180.0;
};

/// Owns everything that the record borrows: an opaque picture of soft tones with grain, its reduction by ten
/// for the light, and two pictures to draw on, so that two forms of the loop can take turns on both.
template <class T>
class SnowFrame {
 public:
  explicit SnowFrame(const Snow& snow);
  SnowFrame(const SnowFrame&) = delete;
  SnowFrame& operator=(const SnowFrame&) = delete;

  const FrameSetup<T>& Record() const { return record_; }
  double Flakes() const { return record_.flakeCount; }
  const minihost::Image& Background() const { return background_; }

  /// Points the record at the other of its two pictures, with the background restored.
  void Restore();

  /// Draws with the plain loop, and keeps the result as what every other form must draw.
  void SetExpected();

  /// Throws Difference, naming `form`, unless the picture is as it was restored.
  void CheckUnchanged(const char* form) const;

  /// Restores, runs `draw` and checks what it drew; returns its seconds.
  double Time(const char* form, const std::function<void(const FrameSetup<T>&)>& draw);

  /// The picture that the record points at.
  const minihost::Image& Picture() const { return pictures_[current_]; }

 private:
  void Fill();

  Snow snow_;
  PF_UtilCallbacks utils_ = {};
  PF_InData inData_;
  FrameSetup<T> record_;
  minihost::Image background_;
  minihost::Image light_;
  minihost::Image expected_;
  minihost::Image pictures_[2];
  PF_LayerDef lightWorld_;
  PF_LayerDef output_ = {};
  int current_ = 0;
};

extern template class SnowFrame<PF_Pixel>;
extern template class SnowFrame<PF_Pixel16>;
extern template class SnowFrame<PF_PixelFloat>;

/// Opaque, each channel a slope across the picture plus grain that does not repeat.
minihost::Image PaintBackground(int width, int height, minihost::Depth depth);
