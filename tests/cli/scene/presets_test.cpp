// Presets: those of a folder, and those that come with the tool.
#include "cli/scene/presets.h"

#include <fstream>

#include "cli/scene/reader.h"
#include "tests/support/cli/expect_error.h"
#include "tests/support/cli/scene_values.h"
#include "tests/support/cli/temporary_folder.h"

namespace {

using cli::ExitCode;
using cli::Scene;

TEST(Presets, AreTheSceneFilesOfAFolderWithALabel) {
  const TemporaryFolder folder;
  std::ofstream(folder / "base.toml") << "[preset]\nname = 'Base'\ndescription = 'd'\n";
  std::ofstream(folder / "notes.txt") << "not a preset";
  const cli::Presets presets(folder / "");
  EXPECT_EQ(presets.All().size(), 1u);
  EXPECT_EQ(presets.Find("BASE").file, folder / "base.toml");
  ExpectError(ExitCode::kUsage, "there is no preset 'bsae' (did you mean 'base'?); there are base",
              [&] { presets.Find("bsae"); });
  ExpectError(ExitCode::kUsage, "there is no preset 'x'; there are none",
              [&] { cli::Presets(folder / "none").Find("x"); });
  std::ofstream(folder / "bad.toml") << "[preset]\nname = 'Bad'\n";
  ExpectError(ExitCode::kUsage, "bad.toml: is no preset", [&] { cli::Presets{folder / ""}; });
}

TEST(ShippedPresets, SetParametersAloneEachToALookOfItsOwn) {
  const cli::Presets presets = cli::Presets::OfTool();
  EXPECT_GE(presets.All().size(), 8u);
  std::vector<Scene> looks{Scene(EffectParameters())};
  for (const cli::Preset& preset : presets.All()) {
    SCOPED_TRACE(preset.file);
    EXPECT_EQ(&presets.Find(preset.name), &preset);
    EXPECT_EQ(preset.id, cli::Slug(preset.id));
    Scene scene(EffectParameters());
    cli::ApplySceneFile(preset.file, scene);
    EXPECT_THAT(looks, testing::Not(testing::Contains(scene)));
    looks.push_back(scene);
    scene.parameters = Scene(EffectParameters()).parameters;
    EXPECT_EQ(scene, Scene(EffectParameters())) << "sets more than parameters";
  }
}

}  // namespace
