#include "cli/command/info.h"

#include <fmt/format.h>

#include "cli/run/open_source.h"
#include "cli/run/plan.h"

namespace cli {

std::string DescribeInput(const std::string& path) {
  const OpenedSource opened = OpenSource(path);
  const SourceTraits& traits = opened.frames->Traits();
  std::string text = fmt::format("{}\n  kind          {}\n", path,
                                 opened.video != nullptr         ? "video"
                                 : traits.firstFrame.has_value() ? "sequence"
                                                                 : "picture");
  text += fmt::format("  size          {} x {}\n", traits.width, traits.height);
  text += fmt::format("  depth         {}\n", NameOfDepth(traits.depth));
  text += fmt::format("  alpha         {}\n", traits.hasAlpha ? "yes" : "no");
  text += fmt::format("  pixel aspect  {:g}\n", traits.pixelAspect);
  if (traits.firstFrame && traits.lastFrame) {
    text += fmt::format("  frames        {} to {}\n", *traits.firstFrame, *traits.lastFrame);
  }
  if (traits.rate) {
    text +=
        fmt::format("  rate          {}/{} frames a second\n", traits.rate->timeScale, traits.rate->timeStep);
  }
  for (const std::string& note : opened.notes) {
    text += fmt::format("  note          {}\n", note);
  }
  return text;
}

}  // namespace cli
