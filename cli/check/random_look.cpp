#include "cli/check/random_look.h"

#include <algorithm>
#include <cmath>

namespace cli::check {
namespace {

using minihost::ParameterInfo;

bool IsWhole(PF_ParamType type) {
  return type != PF_Param_FLOAT_SLIDER;
}

// An end of the range, a value of the slider's, or any: in thirds but for the ends.
double RandomNumber(Random& random, const ParameterInfo& parameter) {
  const double ends[] = {parameter.validMin, parameter.validMax};
  if (random.OneIn(8)) {
    return random.Of(ends);
  }
  const bool hasSlider = parameter.sliderMax > parameter.sliderMin;
  const bool usual = hasSlider && !random.OneIn(3);
  const double value = usual ? random.Real(parameter.sliderMin, parameter.sliderMax)
                             : random.Real(parameter.validMin, parameter.validMax);
  return IsWhole(parameter.type) ? std::round(value) : value;
}

minihost::Value RandomValue(Random& random, const ParameterInfo& parameter, int flakes) {
  if (parameter.type == PF_Param_COLOR) {
    const auto channel = [&] { return static_cast<double>(random.Below(256)); };
    return minihost::Color{channel(), channel(), channel()};
  }
  if (parameter.type == PF_Param_POINT) {
    return minihost::Point{random.Real(-100, 200), random.Real(-100, 200)};
  }
  if (parameter.DisplayName() == "Flakes") {
    return static_cast<double>(random.Between(0, flakes));
  }
  // A deep scene of small flakes shows nothing in a small picture.
  if (parameter.DisplayName() == "Scene Depth" && !random.OneIn(4)) {
    return random.Real(parameter.validMin, parameter.validMin * 10);
  }
  return RandomNumber(random, parameter);
}

}  // namespace

minihost::ParameterSet RandomLook(Random& random, const minihost::SharedParameterList& list, int flakes) {
  minihost::ParameterSet set(list);
  for (const ParameterInfo& parameter : *list) {
    if (!parameter.HasValue()) {
      continue;
    }
    const minihost::Value value = RandomValue(random, parameter, flakes);
    if (parameter.animatable && random.OneIn(4)) {
      set.Set(parameter.index, minihost::Track({{0, value}, {5, RandomValue(random, parameter, flakes)}}));
    } else {
      set.Set(parameter.index, value);
    }
  }
  return set;
}

}  // namespace cli::check
