// The order in which layers win.
#include "cli/command/scene_options.h"

#include <fstream>

#include "tests/support/cli/scene_values.h"
#include "tests/support/cli/temporary_folder.h"

namespace {

using cli::Scene;
using minihost::Value;

TEST(SceneOptions, LaterLayersWin) {
  const TemporaryFolder folder;
  std::ofstream(folder / "base.toml")
      << "[preset]\nname = 'Base'\ndescription = 'd'\n[parameters]\nSize = 1\n"
         "Speed = 10\nWind = 1\nOpacity = { keys = [[0, 1], [9, 10]] }\n";
  std::ofstream(folder / "my.scene")
      << "[render]\nframes = '3-4'\n[parameters]\nSpeed = 20\nWind = 2\nAmount = 2\n";
  std::ofstream(folder / "notes.txt") << "not a preset";
  using Kind = cli::ParameterChange::Kind;
  const cli::Presets presets(folder / "");
  cli::ShotOptions options;
  options.preset = "base";
  options.sceneFile = folder / "my.scene";
  options.changes = {{Kind::kValue, "Wind=3"},      {Kind::kKeys, "Amount@0=3,2=5"},
                     {Kind::kKeys, "Size@0=3,2=5"}, {Kind::kValue, "size=7"},
                     {Kind::kValue, "flakes=8"},    {Kind::kKeys, "flakes@0=0,10=10"},
                     {Kind::kValue, "opacity=60"}};
  const Scene scene = cli::SceneOf(options, EffectParameters(), presets);
  EXPECT_EQ(scene.frames, "3-4");
  const struct {
    const char* name;
    double value;
  } values[] = {{"Speed", 20}, {"Wind", 3},     {"Amount", 4}, {"Size", 7},
                {"Flakes", 1}, {"Opacity", 60}, {"Spread", 15}};
  for (const auto& [name, value] : values) {
    EXPECT_EQ(ValueAt(scene, name, 1), Value(value)) << name;
  }
  EXPECT_EQ(cli::SceneOf({}, EffectParameters(), presets), Scene(EffectParameters()));
}

}  // namespace
