// The effect's own parameters, and the values that a scene gives them.
#pragma once

#include "cli/scene/parameter_names.h"
#include "cli/scene/scene.h"
#include "hostapi/commands.h"
#include "minihost/effect.h"

inline minihost::SharedParameterList EffectParameters() {
  static const auto effect = minihost::Effect::Linked(&MainEntry);
  return effect->SharedParameters();
}

/// By any of the parameter's names.
inline minihost::Value ValueAt(const cli::Scene& scene, const char* name, double frame) {
  const minihost::ParameterList& list = scene.parameters.List();
  return scene.parameters.At(cli::ParameterNames(list).Find(name).index, frame);
}
