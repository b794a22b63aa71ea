// `vintrel render`: snow on a picture, as one frame or a sequence.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "minihost/effect.h"

namespace cli {

/// As the command line has them.
struct RenderOptions {
  std::string photo;
  std::string output;
  std::string frames = "0";
  std::vector<std::string> assignments;  // NAME=VALUE
  std::string fps = "24";
  double shutterDegrees = 180;
  std::string depth;  // 8, 16 or float; empty: the photo's
  std::optional<int> seed;
  bool onlySnow = false;
  bool quiet = false;
};

/// Everything about the command line is checked before the photo is read, and the first output's place before
/// the first frame.  Frames that are done stay when a later one fails.
///
/// Returns the line that sums up the run.  Throws ToolError.
std::string RunRender(const RenderOptions& options, std::shared_ptr<const minihost::Effect> effect);

}  // namespace cli
