// Scene files, read and written.
#include "cli/scene/scene.h"

#include <fstream>
#include <random>

#include "cli/scene/key_text.h"
#include "cli/scene/reader.h"
#include "cli/scene/writer.h"
#include "tests/support/cli/expect_error.h"
#include "tests/support/cli/scene_values.h"
#include "tests/support/cli/temporary_folder.h"

namespace {

using cli::ExitCode;
using cli::Scene;
using minihost::Color;
using minihost::Depth;
using minihost::Ease;
using minihost::Key;
using minihost::ParameterInfo;
using minihost::Point;
using minihost::Track;
using minihost::Value;
using testing::HasSubstr;

Scene Read(const std::string& text) {
  Scene scene(EffectParameters());
  cli::ApplySceneText(text, "snow.toml", scene);
  return scene;
}

std::string Repeated(const std::string& text, int times) {
  std::string repeated;
  for (int i = 0; i < times; ++i) {
    repeated += text;
  }
  return repeated;
}

TEST(SceneReader, TakesEveryForm) {
  const Scene scene = Read(R"(
[preset]
name = "Any"
description = "A label does no harm"
[render]
input = "plate.####.exr"
output = 'out\snow.png'
frames = "1-100x5"
fps = 23.976
shutter = 90.5
depth = 16
alpha = "premultiplied"
compression = "piz"
codec = "hevc"
quality = 20
sound = "aac"
proxy = 2
pixel-aspect = 1.5
[parameters]
Flakes = 20_000
size = 4.25
Speed = { keys = [[48.5, 400], [-2, 100]], ease = "smooth" }
Wind = { keys = [[0, 0, "hold"], [24, 30, "linear"], [48, -30]] }
Color = { keys = [[0, "#ffeedd"], [10, "#000"]] }
Offset = [50, -40.5]
"Transfer Mode" = "composite"
"Composite With Original" = false
"wiggle/amount" = { keys = [[7, 30]] })");
  EXPECT_EQ(scene.input, "plate.####.exr");
  EXPECT_EQ(scene.output, "out\\snow.png");
  EXPECT_EQ(scene.frames, "1-100x5");
  EXPECT_EQ(scene.fps, "23.976");
  EXPECT_EQ(scene.shutterDegrees, 90.5);
  EXPECT_EQ(scene.depth, Depth::kBits16);
  EXPECT_EQ(scene.alpha, cli::AlphaForm::kPremultiplied);
  EXPECT_EQ(scene.encoding, (cli::EncodingSettings{"piz", "hevc", 20, cli::SoundWish::kAac, false}));
  EXPECT_EQ(scene.proxy, 2);
  EXPECT_EQ(scene.pixelAspect, 1.5);
  const struct {
    const char* name;
    double frame;
    Value value;
  } values[] = {{"Flakes", 0, 20000.0},     {"Size", 0, 4.25},
                {"Speed", -2, 100.0},       {"Speed", 48.5, 400.0},
                {"Speed", 10.625, 146.875}, {"Wind", 23, 0.0},
                {"Wind", 36, 0.0},          {"Color", 0, Color{255, 238, 221}},
                {"Color", 20, Color{}},     {"Offset", 0, Point{50, -40.5}},
                {"Transfer Mode", 0, 1.0},  {"Composite With Original", 0, 0.0},
                {"Amount", 99, 30.0},       {"Opacity", 0, 50.0}};
  for (const auto& [name, frame, value] : values) {
    EXPECT_EQ(ValueAt(scene, name, frame), value) << name << " at " << frame;
  }
  EXPECT_EQ(Read("[render]\nblank = '1920x1080'\ndepth = 'float'\nframes = 7\nfps = 25").blank,
            (cli::FrameSize{1920, 1080}));
  EXPECT_EQ(Read(""), Scene(EffectParameters()));
}

TEST(SceneReader, RefusesWithPlaceAndReason) {
  const struct {
    const char* text;
    const char* message;
  } cases[] = {
      {"[rendr]", "snow.toml:1:2: 'rendr' is not a section of a scene (did you mean 'render'?)"},
      {"render = 5", "1:10: 'render' is an integer; write it as a section"},
      {"[render]\nshuter = 1", "snow.toml:2:1: [render] has no key 'shuter' (did you mean 'shutter'?)"},
      {"[render]\nxyzzyxyzzy = 1", "no key 'xyzzyxyzzy'; it takes input, blank"},
      {"[render]\ninput = 5", "2:9: input: must be a string, not an integer"},
      {"[render]\noutput = ''", "output: must not be empty"},
      {"[render]\ninput = 'a'\nblank = '1x1'", "3:1: a scene has an input or a blank size, not both"},
      {"[render]\nblank = '1920'", "blank: '1920' is not a size in pixels up to 32767 a side"},
      {"[render]\nblank = '5x32768'", "'5x32768' is not a size"},
      {"[render]\nframes = true", "frames: must be a string, not a boolean"},
      {"[render]\nshutter = 0", "shutter: 0 is not between 1 and 720 degrees"},
      {"[render]\nshutter = nan", "shutter: nan is not between"},
      {"[render]\nshutter = '180'", "shutter: must be a number, not a string"},
      {"[render]\npixel-aspect = 0", "pixel-aspect: 0 is not a pixel's width over its height, 0.01 to 100"},
      {"[preset]\nname = \"a\\nb\"", "name: must be one line"},
      {"[parameters]\n\nFlaks = 5", "snow.toml:3:1: there is no parameter 'Flaks' (did you mean 'flakes'?)"},
      {"[parameters]\nSpeed = 3000", "2:9: Speed: '3000' is not possible; it takes 0.01 to 2000"},
      {"[parameters]\nSpeed = nan", "Speed: 'nan' is not possible"},
      {"[parameters]\nSpeed = 1e400", "2:14: "},
      {"[parameters]\nSpeed = '250'", "Speed takes a number, not a string"},
      {"[parameters]\n'Transfer Mode' = 1.0", "Transfer Mode takes a choice's name"},
      {"[parameters]\n'Stochastic Wiggle' = 1", "takes true or false, not an integer"},
      {"[parameters]\nColor = [1, 2, 3]", "Color takes a colour as \"#rrggbb\", not an array"},
      {"[parameters]\nOffset = [50]", "Offset takes a point as [x, y] in percent, not an array like this"},
      {"[parameters]\nSize = 1\nSize = 2", "snow.toml:3:"},
      {"[parameters]\nSize = 1\nsize = 2", "3:1: 'size' is Size, which 'Size' has set already"},
      {"[parameters]\nwiggle = { amount = 1 }", "there is no parameter 'wiggle'"},
      {"[parameters]\nSpeed = { key = [[0, 1]] }",
       "2:11: Speed: 'key' is neither keys nor ease (did you mean 'keys'?)"},
      {"[parameters]\nSpeed = {}", "Speed: there are no keys; write { keys"},
      {"[parameters]\nSpeed = { keys = [[0, 1]], ease = 'smoth' }",
       "2:35: 'smoth' is not hold, linear or smooth (did you mean 'smooth'?)"},
      {"[parameters]\nSpeed = { keys = [[0, 1, 2]] }",
       "an ease is \"hold\", \"linear\" or \"smooth\", not an integer"},
      {"[parameters]\nSpeed = { keys = [0, 1] }",
       "Speed: a key is [frame, value] or [frame, value, ease], not an integer"},
      {"[parameters]\nSpeed = { keys = [['a', 1]] }", "not an array like this"},
      {"[parameters]\nSpeed = { keys = [[0, 1], [5, 0]] }", "2:31: Speed: '0' is not possible"},
      {"[parameters]\nSpeed = { keys = [[0, 1], [5, 2], [0.0, 3]] }", "2:35: Speed: frame 0 has two keys"},
      {"[parameters]\nSpread = { keys = [[0, 1], [9, 2]] }",
       "2:19: Spread cannot be animated; give it one value"},
      {"[parameters", "snow.toml:1:12: "},
      {"[render]\ninput = \"\xff\"", "snow.toml:2:"},
  };
  for (const auto& [text, message] : cases) {
    SCOPED_TRACE(text);
    ExpectError(ExitCode::kUsage, message, [scene = text] { Read(scene); });
  }
}

TEST(SceneReader, IsBounded) {
  const auto refused = [](const std::string& text, const char* message) {
    ExpectError(ExitCode::kUsage, message, [scene = text] { Read(scene); });
  };
  refused(Repeated("#", 1 << 20) + "\n", "snow.toml: is longer than 1048576 bytes");
  refused("[parameters]\nSpeed = " + Repeated("[", 1000), "nest");
  refused("[parameters]\n" + Repeated("S", 300) + " = 1", "longer than the name of any parameter");
  refused("[parameters]\nSpeed = { keys = [" + Repeated("[0,1],", 100'001) + "] }",
          "Speed makes 100001 keys, and a scene has 100000 at most");
  // Keys of many parts are bounded, whatever their parts look like; numbers are not.
  for (const char* part : {"a.", "1.", "a1.1", "0e1.", "1 .", "\"1,1\" . ", "'=1'."}) {
    refused(Repeated(part, 100'000) + "1 = 1", "snow.toml: has more than 5000 dots outside of numbers");
  }
  refused("[parameters]\nSpeed = { keys = [" + Repeated("[0.5,1.5],", 6000) + "] }",
          "frame 0.5 has two keys");
  // The deepest that is let through is taken apart again without harm.
  refused(Repeated("a = { " + Repeated("a.", 24), 200) + "a = 1" + Repeated(" }", 200),
          "'a' is not a section");
  refused(Repeated("a.", 4999) + "a = 1", "'a' is not a section");

  Scene scene(EffectParameters());
  ExpectError(ExitCode::kUsage, "Speed", [&] {
    cli::ApplySceneText("[render]\nframes = 5\n[parameters]\nSize = 1\nSpeed = 0", "x", scene);
  });
  EXPECT_EQ(scene, Scene(EffectParameters())) << "half applied";

  const TemporaryFolder folder;
  for (const auto& file : {folder / "none.toml", folder / ""}) {
    ExpectError(ExitCode::kInput, "cannot read scene '" + file.string(),
                [&] { cli::ApplySceneFile(file, scene); });
  }
  std::ofstream(folder / "a.toml") << "[parameters]\nSpeed = 0";
  ExpectError(ExitCode::kUsage, (folder / "a.toml").string() + ":2:9: Speed",
              [&] { cli::ApplySceneFile(folder / "a.toml", scene); });
}

/// Any scene that can be.
class RandomScene {
 public:
  explicit RandomScene(unsigned seed) : random_(seed) {}

  Scene Make() {
    Scene scene(EffectParameters());
    if (Chance()) {
      scene.input = "a \"b\" \\ \t#\x7f \u00e9 {}.####.exr";
    }
    if (scene.input.empty() && Chance()) {
      scene.blank = {Whole(1, 32767), Whole(1, 32767)};
    }
    if (Chance()) {
      scene.output = "'out'.png";
    }
    if (Chance()) {
      scene.frames = "1-100x3,-7";
    }
    if (Chance()) {
      scene.fps = "24000/1001";
    }
    scene.shutterDegrees = Real(1, 720);
    if (Chance()) {
      scene.depth = static_cast<Depth>(Whole(0, 2));
    }
    if (Chance()) {
      scene.alpha = cli::AlphaForm::kPremultiplied;
    }
    if (Chance()) {
      scene.encoding.compression = "none";
      scene.retime = true;
    }
    scene.proxy = 1 << Whole(0, 2);
    if (Chance()) {
      scene.pixelAspect = Real(0.01, 100);
    }
    for (const ParameterInfo& parameter : *EffectParameters()) {
      if (parameter.HasValue()) {
        scene.parameters.Set(parameter.index, MakeTrack(parameter));
      }
    }
    return scene;
  }

 private:
  bool Chance() { return Whole(0, 1) == 1; }
  int Whole(int low, int high) { return std::uniform_int_distribution(low, high)(random_); }
  double Real(double low, double high) { return std::uniform_real_distribution(low, high)(random_); }

  Value MakeValue(const ParameterInfo& parameter) {
    if (parameter.type == PF_Param_COLOR) {
      return Color{double(Whole(0, 255)), double(Whole(0, 255)), double(Whole(0, 255))};
    }
    if (parameter.type == PF_Param_POINT) {
      return Point{Real(-200, 200), Real(-1e-9, 1e-9)};
    }
    if (parameter.type != PF_Param_FLOAT_SLIDER) {
      return double(Whole(int(parameter.validMin), int(parameter.validMax)));
    }
    return Chance()   ? Real(parameter.validMin, parameter.validMax)
           : Chance() ? parameter.validMin
                      : parameter.validMax;
  }

  Track MakeTrack(const ParameterInfo& parameter) {
    if (!parameter.animatable || Chance()) {
      return MakeValue(parameter);
    }
    const bool shared = Chance();
    const int ease = Whole(0, 2);
    std::vector<Key> keys;
    for (int count = Whole(2, 9), i = 0; i < count; ++i) {
      keys.push_back({i * 10 + (Chance() ? 0 : Real(-5, 4)), MakeValue(parameter),
                      static_cast<Ease>(shared ? ease : Whole(0, 2))});
    }
    return Track(keys);
  }

  std::mt19937 random_;
};

TEST(SceneWriter, IsReadBackAsTheSameScene) {
  for (unsigned seed = 0; seed < 60; ++seed) {
    const Scene scene = RandomScene(seed).Make();
    const std::string text = cli::WriteScene(scene);
    Scene back(EffectParameters());
    back.parameters = RandomScene(seed + 1000).Make().parameters;  // all of them are replaced
    cli::ApplySceneText(text, "written", back);
    EXPECT_EQ(back, scene) << "seed " << seed << '\n' << text;
    EXPECT_EQ(cli::WriteScene(back), text) << "seed " << seed;
  }
}

}  // namespace
