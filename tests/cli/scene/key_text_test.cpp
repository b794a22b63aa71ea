// Keys on the command line.
#include "cli/scene/key_text.h"

#include "tests/support/cli/expect_error.h"
#include "tests/support/cli/scene_values.h"

namespace {

using cli::ExitCode;
using cli::Scene;
using minihost::Color;
using minihost::Point;
using minihost::Value;

TEST(KeyText, ReadsKeys) {
  Scene scene(EffectParameters());
  for (const char* keys :
       {"Speed@0=100,48=400", "wind@-10=0:hold,1e1=50,0.5=30:smooth", "Color@0=#fff,10=0;0;0",
        "Offset@0=50;50,10=70%;-20.5%:hold", "Transfer Mode@0=Lighten,9=composite", "Size@5=2"}) {
    cli::AssignKeys(scene.parameters, keys);
  }
  const struct {
    const char* name;
    double frame;
    Value value;
  } values[] = {{"Speed", 24, 250.0},
                {"Wind", 0, 0.0},
                {"Wind", 2.875, 33.125},
                {"Color", 5, Color{127.5, 127.5, 127.5}},
                {"Offset", 5, Point{60, 14.75}},
                {"Transfer Mode", 8, 2.0},
                {"Transfer Mode", 9, 1.0},
                {"Size", 0, 2.0}};
  for (const auto& [name, frame, value] : values) {
    EXPECT_EQ(ValueAt(scene, name, frame), value) << name << " at " << frame;
  }
}

TEST(KeyText, RefusesTheRest) {
  const struct {
    const char* text;
    const char* message;
  } cases[] = {
      {"Speed=5", "'Speed=5' has no keys; write a name, @ and keys"},
      {"Sped@0=1", "did you mean 'speed'?"},
      {"Speed@", "Speed: '' is not a key; write frame=value"},
      {"Speed@0=1,", "Speed: '' is not a key"},
      {"Speed@1 =1", "Speed: '1 =1' is not a key"},
      {"Speed@0=", "Speed: '' is not possible; it takes 0.01 to 2000"},
      {"Speed@0=1:soft", "'soft' is not hold, linear or smooth"},
      {"Speed@0=1,5=2,0.0=3", "Speed: frame 0 has two keys"},
      {"Speed@nan=1", "a key at frame nan is beyond"},
      {"Speed@3e9=1", "a key at frame 3000000000 is beyond the frames that can be counted, -2147483647 to"},
      {"Scene Depth@0=500", "Scene Depth cannot be animated"},
      {"Offset@0=50,50", "Offset: '50' is not possible; it takes x%,y%"},
  };
  Scene scene(EffectParameters());
  for (const auto& [text, message] : cases) {
    SCOPED_TRACE(text);
    ExpectError(ExitCode::kUsage, message, [&, keys = text] { cli::AssignKeys(scene.parameters, keys); });
  }
  EXPECT_EQ(scene, Scene(EffectParameters()));
}

}  // namespace
