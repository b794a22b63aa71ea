#include "cli/scene/layers.h"

#include <utility>

#include "cli/scene/reader.h"

namespace cli {

Scene MakeScene(minihost::SharedParameterList list, const Presets& presets, const SceneLayers& layers) {
  Scene scene(std::move(list));
  if (!layers.preset.empty()) {
    ApplySceneFile(presets.Find(layers.preset).file, scene);
  }
  if (!layers.sceneFile.empty()) {
    ApplySceneFile(layers.sceneFile, scene);
  }
  for (const ParameterChange& change : layers.changes) {
    Apply(scene.parameters, change);
  }
  return scene;
}

}  // namespace cli
