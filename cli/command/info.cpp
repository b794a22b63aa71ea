#include <fmt/format.h>

#include <string>
#include <utility>
#include <vector>

#include "cli/command/commands.h"
#include "cli/command/text_table.h"
#include "cli/report/json.h"
#include "cli/run/open_source.h"
#include "cli/run/plan.h"

namespace cli {
namespace {

/// For people and for programs.
struct Fact {
  std::string name;
  std::string text;
  Json value;
};

std::vector<Fact> FactsOf(const OpenedSource& opened) {
  const SourceTraits& traits = opened.frames->Traits();
  const std::string kind = opened.video != nullptr ? "video" : traits.firstFrame ? "sequence" : "picture";
  std::vector<Fact> facts = {{"kind", kind, kind},
                             {"size", fmt::format("{} x {}", traits.width, traits.height),
                              Json::array({traits.width, traits.height})},
                             {"depth", NameOfDepth(traits.depth), FormatDepth({traits.depth, false})},
                             {"alpha", traits.hasAlpha ? "yes" : "no", traits.hasAlpha},
                             {"pixel aspect", fmt::format("{:g}", traits.pixelAspect), traits.pixelAspect}};
  if (traits.firstFrame && traits.lastFrame) {
    facts.push_back({"frames", fmt::format("{} to {}", *traits.firstFrame, *traits.lastFrame),
                     Json::array({*traits.firstFrame, *traits.lastFrame})});
  }
  if (traits.rate) {
    const std::string rate = fmt::format("{}/{}", traits.rate->timeScale, traits.rate->timeStep);
    facts.push_back({"rate", rate + " frames a second", rate});
  }
  const auto add = [&](const auto& pairs) {
    for (const auto& [name, text] : pairs) {
      facts.push_back({name, text, text});
    }
  };
  if (opened.video != nullptr) {
    add(opened.video->About());
  }
  if (traits.extras) {
    add(traits.extras->facts);
  }
  return facts;
}

}  // namespace

std::string DescribeInput(const std::string& path, InfoForm form) {
  const OpenedSource opened = OpenSource(path);
  const std::vector<Fact> facts = FactsOf(opened);
  if (form == InfoForm::kJson) {
    Json object = {{"path", path}};
    for (const Fact& fact : facts) {
      object[fact.name] = fact.value;
    }
    object["notes"] = opened.notes;
    return JsonLine(object);
  }
  std::vector<std::vector<std::string>> rows;
  rows.reserve(facts.size() + opened.notes.size());
  for (const Fact& fact : facts) {
    rows.push_back({"", fact.name, fact.text});  // indented by the empty column
  }
  for (const std::string& note : opened.notes) {
    rows.push_back({"", "note", note});
  }
  return path + '\n' + FormatTable(rows);
}

}  // namespace cli
