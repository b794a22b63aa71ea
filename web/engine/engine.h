// The effect for one page's worker: its parameters, its plates, one frame at a time.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "cli/report/json.h"
#include "minihost/instance.h"
#include "web/engine/plate.h"

namespace web {

enum class Loop {
  kBest,   // as the effect chooses
  kPlain,  // its meaning, for tests
};

/// A frame to render, apart from what is known of the parameters.
struct FrameRequest {
  std::int32_t frame = 0;
  std::string fps;              // as the tool reads it
  double shutterDegrees = 180;  // 1 to 720
  int plate = 0;                // as AddPlate named it
  int divisor = 1;              // 1, 2 or 4: rendered at one over this of the size
  minihost::Depth depth = minihost::Depth::kBits8;
  double pixelAspect = 1;
};

/// What is wrong comes as cli::ToolError, with the tool's words, or as a standard exception.
class Engine {
 public:
  explicit Engine(Loop loop = Loop::kBest);

  /// {"version", "parameters"}.
  cli::Json Describe() const;

  /// The [parameters] of a scene file are all that differs from the defaults.
  void SetParameters(std::string_view toml);

  /// A plate to be filled in the page's order and sealed.  Its number stays good until it is dropped.
  int AddPlate(int width, int height, minihost::Depth depth);
  Plate& PlateAt(int number);
  void DropPlate(int number);

  /// Straight RGBA, in this engine's memory until the next render.
  const minihost::Image& Render(const FrameRequest& request);

  /// The slugs of the parameters that the effect greys out at this frame.
  cli::Json Disabled(double frame);

  /// The value that the text stands for.
  cli::Json Parse(std::string_view slug, std::string_view text) const;

  cli::Json ReadScene(std::string_view text, std::string_view name) const;

  /// The scene that `toml` makes, in full.
  std::string WriteScene(std::string_view toml) const;

 private:
  minihost::Instance& InstanceFor(const minihost::FrameTiming& timing);

  std::shared_ptr<const minihost::Effect> effect_;
  minihost::ParameterSet parameters_;
  std::optional<minihost::Instance> instance_;  // none after a change that its sums know nothing of
  minihost::FrameTiming timing_;                // the instance's
  std::map<int, Plate> plates_;
  int lastPlate_ = 0;
  minihost::Image output_;
};

}  // namespace web
