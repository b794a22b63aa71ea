#include "cli/scene/scene.h"

#include <algorithm>
#include <tuple>

namespace cli {
namespace {

using minihost::Track;

bool SameCourse(const Track& one, const Track& other) {
  if (!one.Animated() && !other.Animated()) {
    return one.Keys().front().value == other.Keys().front().value;
  }
  const auto& keys = one.Keys();
  const auto& others = other.Keys();
  if (keys.size() != others.size()) {
    return false;
  }
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (keys[i].frame != others[i].frame || keys[i].value != others[i].value) {
      return false;
    }
    if (i + 1 < keys.size() && keys[i].ease != others[i].ease) {
      return false;
    }
  }
  return true;
}

bool SameParameters(const minihost::ParameterSet& one, const minihost::ParameterSet& other) {
  return one.List().size() == other.List().size() &&
         std::ranges::all_of(one.List(), [&](const minihost::ParameterInfo& parameter) {
           return !parameter.HasValue() ||
                  SameCourse(one.TrackOf(parameter.index), other.TrackOf(parameter.index));
         });
}

auto RenderSettings(const Scene& scene) {
  return std::tie(scene.input, scene.blank, scene.output, scene.frames, scene.fps, scene.retime,
                  scene.shutterDegrees, scene.depth, scene.alpha, scene.encoding, scene.proxy,
                  scene.pixelAspect);
}

}  // namespace

bool operator==(const Scene& one, const Scene& other) {
  return RenderSettings(one) == RenderSettings(other) && SameParameters(one.parameters, other.parameters);
}

}  // namespace cli
