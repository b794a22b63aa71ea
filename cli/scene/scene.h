// A render, described completely: what is read, what is written, which frames, and how the snow falls.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "cli/scene/settings.h"
#include "minihost/parameter/set.h"

namespace cli {

struct Scene {
  explicit Scene(minihost::SharedParameterList list) : parameters(std::move(list)) {}

  std::string input;                       // a path or a pattern; empty with `blank`
  std::optional<FrameSize> blank;          // transparent frames of this size in place of an input
  std::string output;                      // a path or a pattern
  std::string frames;                      // as ParseFrames reads it; empty: the input's, or frame 0
  std::string fps;                         // as ParseFrameRate reads it; empty: the input's, or 24
  bool retime = false;                     // of a video: the picture shown at each moment, at `fps`
  double shutterDegrees = 180;             // 1..720
  std::optional<minihost::Depth> depth;    // empty: the input's
  AlphaForm alpha = AlphaForm::kStraight;  // of a video; pictures say it themselves
  EncodingSettings encoding;
  int proxy = 1;                      // 1, 2 or 4: rendered at one over this of the size
  std::optional<double> pixelAspect;  // a pixel's width over its height; empty: the input's
  minihost::ParameterSet parameters;

  void SetDepth(const DepthSetting& setting) {
    depth = setting.depth;
    encoding.isHalf = setting.isHalf;
  }
};

/// Whether two scenes say the same.  A single key says as much as a constant, and how the last key leads on
/// says nothing.
bool operator==(const Scene& one, const Scene& other);

}  // namespace cli
