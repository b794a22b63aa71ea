#include "cli/scene/reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "cli/report/error.h"
#include "cli/report/nearest_name.h"
#include "cli/scene/frame_range.h"
#include "cli/scene/frame_rate.h"
#include "cli/scene/parameters.h"
#include "cli/scene/toml_file.h"

namespace cli {
namespace {

std::string Text(const toml::node& node) {
  const auto text = node.value_exact<std::string>();
  if (!text) {
    Refuse(ExitCode::kUsage, "must be a string, not {}", DescribeNode(node));
  }
  if (text->empty()) {
    Refuse(ExitCode::kUsage, "must not be empty; leave the key out");
  }
  return *text;
}

std::string ReadLine(const toml::node& node) {
  std::string text = Text(node);
  if (text.find('\n') != text.npos) {
    Refuse(ExitCode::kUsage, "must be one line");
  }
  return text;
}

double Number(const toml::node& node) {
  if (!node.is_number()) {
    Refuse(ExitCode::kUsage, "must be a number, not {}", DescribeNode(node));
  }
  return *node.value<double>();
}

/// For keys that may be written with or without quotes.
std::string TextOrNumber(const toml::node& node) {
  if (const auto integer = node.value_exact<std::int64_t>()) {
    return fmt::format("{}", *integer);
  }
  return node.is_number() ? fmt::format("{}", Number(node)) : Text(node);
}

struct RenderKey {
  std::string_view name;
  void (*apply)(const toml::node& value, Scene& scene);
};

constexpr RenderKey kRenderKeys[] = {
    {"input",
     [](const toml::node& value, Scene& scene) {
       scene.input = Text(value);
       scene.blank.reset();
     }},
    {"blank",
     [](const toml::node& value, Scene& scene) {
       scene.blank = ParseFrameSize(Text(value));
       scene.input.clear();
     }},
    {"output", [](const toml::node& value, Scene& scene) { scene.output = Text(value); }},
    {"frames",
     [](const toml::node& value, Scene& scene) {
       scene.frames = TextOrNumber(value);
       ParseFrames(scene.frames);
     }},
    {"fps",
     [](const toml::node& value, Scene& scene) {
       scene.fps = TextOrNumber(value);
       ParseFrameRate(scene.fps);
     }},
    {"retime",
     [](const toml::node& value, Scene& scene) {
       const auto retime = value.value_exact<bool>();
       if (!retime) {
         Refuse(ExitCode::kUsage, "must be true or false, not {}", DescribeNode(value));
       }
       scene.retime = *retime;
     }},
    {"shutter",
     [](const toml::node& value, Scene& scene) {
       scene.shutterDegrees = Number(value);
       CheckShutter(scene.shutterDegrees);
     }},
    {"depth", [](const toml::node& value, Scene& scene) { scene.SetDepth(ParseDepth(TextOrNumber(value))); }},
    {"alpha", [](const toml::node& value, Scene& scene) { scene.alpha = ParseAlphaForm(Text(value)); }},
    {"compression", [](const toml::node& value, Scene& scene) { scene.encoding.compression = Text(value); }},
    {"codec", [](const toml::node& value, Scene& scene) { scene.encoding.codec = Text(value); }},
    {"quality",
     [](const toml::node& value, Scene& scene) {
       const auto quality = value.value_exact<std::int64_t>();
       if (!quality || !std::in_range<int>(*quality)) {
         Refuse(ExitCode::kUsage, "must be a whole number on the encoder's scale, not {}",
                quality ? std::to_string(*quality) : DescribeNode(value));
       }
       scene.encoding.quality = static_cast<int>(*quality);
     }},
    {"sound", [](const toml::node& value, Scene& scene) { scene.encoding.sound = ParseSound(Text(value)); }},
    {"proxy",
     [](const toml::node& value, Scene& scene) {
       const double divisor = Number(value);
       CheckProxy(divisor);
       scene.proxy = static_cast<int>(divisor);
     }},
    {"pixel-aspect",
     [](const toml::node& value, Scene& scene) {
       scene.pixelAspect = Number(value);
       CheckPixelAspect(*scene.pixelAspect);
     }},
};

void ApplyRender(const toml::table& section, Scene& scene) {
  if (section.contains("input") && section.contains("blank")) {
    RefuseAt(section.find("blank")->first.source(), "a scene has an input or a blank size, not both");
  }
  for (const auto& [key, value] : EntriesOf(section)) {
    const auto known = std::ranges::find(kRenderKeys, key->str(), &RenderKey::name);
    if (known == std::end(kRenderKeys)) {
      std::vector<std::string_view> names;
      for (const RenderKey& renderKey : kRenderKeys) {
        names.push_back(renderKey.name);
      }
      RefuseAt(key->source(), "[render] has no key '{}'{}; it takes {}", key->str(),
               SuggestNearest(key->str(), names), fmt::join(names, ", "));
    }
    // Bindings may be captured by name only, as far as one of our compilers is concerned.
    At(value->source(),
       [&, &key = key, &value = value] { About(key->str(), [&] { known->apply(*value, scene); }); });
  }
}

/// A key that is missing leaves its text empty.
PresetLabel ReadLabel(const toml::table& section) {
  PresetLabel label;
  for (const auto& [key, value] : EntriesOf(section)) {
    if (key->str() != "name" && key->str() != "description") {
      RefuseAt(key->source(), "[preset] has no key '{}'; it takes name and description", key->str());
    }
    const std::string text = At(value->source(), [&key = key, &value = value] {
      return About(key->str(), [&] { return ReadLine(*value); });
    });
    (key->str() == "name" ? label.name : label.description) = text;
  }
  return label;
}

void Apply(const toml::table& document, Scene& scene) {
  constexpr std::string_view kSections[] = {"render", "parameters", "preset"};
  Scene changed = scene;
  for (const auto& [key, value] : EntriesOf(document)) {
    if (std::ranges::find(kSections, key->str()) == std::end(kSections)) {
      RefuseAt(key->source(), "'{}' is not a section of a scene{}; it has [render] and [parameters]",
               key->str(), SuggestNearest(key->str(), kSections));
    }
    const toml::table* section = value->as_table();
    if (!section) {
      RefuseAt(value->source(), "'{}' is {}; write it as a section, [{}]", key->str(), DescribeNode(*value),
               key->str());
    }
    if (key->str() == "render") {
      ApplyRender(*section, changed);
    }
    if (key->str() == "parameters") {
      ApplyParameters(*section, changed.parameters);
    }
    if (key->str() == "preset") {
      ReadLabel(*section);
    }
  }
  scene = std::move(changed);
}

}  // namespace

void ApplySceneFile(const std::filesystem::path& file, Scene& scene) {
  Apply(ReadTomlFile(file), scene);
}

void ApplySceneText(std::string_view text, std::string_view name, Scene& scene) {
  Apply(ParseToml(text, name), scene);
}

PresetLabel ReadPresetLabel(const std::filesystem::path& file) {
  const toml::table document = ReadTomlFile(file);
  const toml::table* section = document["preset"].as_table();
  PresetLabel label = section ? ReadLabel(*section) : PresetLabel{};
  if (label.name.empty() || label.description.empty()) {
    Refuse(ExitCode::kUsage, "{}: is no preset; it has no [preset] with a name and a description",
           file.string());
  }
  return label;
}

}  // namespace cli
