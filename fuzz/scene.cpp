// Scene files: what is taken is written so that it reads as the same scene again, and what is refused changes
// nothing.
#include "cli/report/error.h"
#include "cli/scene/reader.h"
#include "cli/scene/writer.h"
#include "fuzz/input.h"
#include "minihost/effect.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const auto effect = minihost::Effect::Linked(&MainEntry);
  const cli::Scene fresh(effect->SharedParameters());
  cli::Scene scene = fresh;
  try {
    cli::ApplySceneText({reinterpret_cast<const char*>(bytes), size}, "fuzz.toml", scene);
  } catch (const cli::ToolError&) {
    fuzz::Require(scene == fresh, "what is refused changes nothing");
    return 0;
  }
  const std::string text = cli::WriteScene(scene);
  cli::Scene again = fresh;
  cli::ApplySceneText(text, "written.toml", again);
  fuzz::Require(cli::WriteScene(again) == text, "a scene that was written reads as the same");
  return 0;
}
