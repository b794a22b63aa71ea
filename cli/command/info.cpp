#include <fmt/format.h>

#include "cli/command/commands.h"
#include "cli/command/text_table.h"
#include "cli/run/open_source.h"
#include "cli/run/plan.h"

namespace cli {

std::string InputTable(const std::string& path) {
  const OpenedSource opened = OpenSource(path);
  const SourceTraits& traits = opened.frames->Traits();
  std::vector<std::vector<std::string>> rows;
  const auto add = [&](const char* name, const std::string& value) {
    rows.push_back({"", name, value});  // indented by the empty column
  };
  add("kind", opened.video != nullptr ? "video" : traits.firstFrame.has_value() ? "sequence" : "picture");
  add("size", fmt::format("{} x {}", traits.width, traits.height));
  add("depth", NameOfDepth(traits.depth));
  add("alpha", traits.hasAlpha ? "yes" : "no");
  add("pixel aspect", fmt::format("{:g}", traits.pixelAspect));
  if (traits.firstFrame && traits.lastFrame) {
    add("frames", fmt::format("{} to {}", *traits.firstFrame, *traits.lastFrame));
  }
  if (traits.rate) {
    add("rate", fmt::format("{}/{} frames a second", traits.rate->timeScale, traits.rate->timeStep));
  }
  if (opened.video != nullptr) {
    for (const auto& [name, value] : opened.video->About()) {
      add(name.c_str(), value);
    }
  }
  if (traits.extras) {
    for (const auto& [name, value] : traits.extras->facts) {
      add(name.c_str(), value);
    }
  }
  for (const std::string& note : opened.notes) {
    add("note", note);
  }
  return path + '\n' + FormatTable(rows);
}

}  // namespace cli
