#include "cli/scene/writer.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <string_view>
#include <vector>

#include "cli/report/error.h"
#include "cli/scene/key_text.h"
#include "cli/scene/parameter_names.h"
#include "cli/scene/parameter_text.h"
#include "cli/scene/toml_file.h"

namespace cli {
namespace {

using minihost::Ease;
using minihost::Key;
using minihost::ParameterInfo;
using minihost::Track;
using minihost::Value;

// More keys than this stand on lines of their own.
constexpr std::size_t kKeysInLine = 4;

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char letter : text) {
    const auto code = static_cast<unsigned char>(letter);
    if (letter == '"' || letter == '\\') {
      quoted += '\\';
      quoted += letter;
    } else if (code < 0x20 || code == 0x7f) {
      quoted += fmt::format("\\u{:04x}", code);
    } else {
      quoted += letter;
    }
  }
  return quoted + '"';
}

std::string KeyText(std::string_view name) {
  const auto isBare = [](unsigned char letter) {
    return letter < 0x80 && (std::isalnum(letter) || letter == '_' || letter == '-');
  };
  return !name.empty() && std::ranges::all_of(name, isBare) ? std::string(name) : Quoted(name);
}

/// The display name where that is enough to find the parameter, else with the group.
std::string NameOf(const ParameterInfo& parameter, const ParameterNames& names) {
  const std::string& slug = names.SlugOf(parameter);
  const std::string& name = parameter.DisplayName();
  if (name.find('/') != name.npos) {
    return slug;
  }
  return slug.find('/') == slug.npos ? name : parameter.group + '/' + name;
}

std::string ValueText(const ParameterInfo& parameter, const Value& value) {
  if (const auto* point = std::get_if<minihost::Point>(&value)) {
    return fmt::format("[{}, {}]", point->x, point->y);
  }
  if (std::holds_alternative<minihost::Color>(value) || parameter.type == PF_Param_POPUP) {
    return Quoted(FormatValue(parameter, value));
  }
  const double number = std::get<double>(value);
  if (parameter.type == PF_Param_CHECKBOX) {
    return number != 0 ? "true" : "false";
  }
  return fmt::format("{}", number);
}

/// An ease that all keys share stands once; else every key names its own, linear ones aside.
std::string TrackText(const ParameterInfo& parameter, const Track& track) {
  const std::vector<Key>& keys = track.Keys();
  if (!track.Animated()) {
    return ValueText(parameter, keys.front().value);
  }
  const Ease first = keys.front().ease;
  const bool shared = std::ranges::all_of(keys, [&](const Key& key) { return key.ease == first; });
  const bool inLine = keys.size() <= kKeysInLine;
  std::string text;
  for (const Key& key : keys) {
    const bool named = !shared && key.ease != Ease::kLinear;
    text += fmt::format("{}[{}, {}{}]",
                        text.empty() ? ""
                        : inLine     ? ", "
                                     : ",\n  ",
                        key.frame, ValueText(parameter, key.value),
                        named ? fmt::format(", \"{}\"", FormatEase(key.ease)) : "");
  }
  return fmt::format(
      "{{ keys = [{}{}]{} }}", inLine ? "" : "\n  ", text,
      shared && first != Ease::kLinear ? fmt::format(", ease = \"{}\"", FormatEase(first)) : "");
}

std::string RenderText(const Scene& scene) {
  std::string text = "[render]\n";
  const auto add = [&](std::string_view key, std::string_view value) {
    text += fmt::format("{} = {}\n", key, value);
  };
  if (!scene.input.empty()) {
    add("input", Quoted(scene.input));
  }
  if (scene.blank) {
    add("blank", Quoted(FormatFrameSize(*scene.blank)));
  }
  if (!scene.output.empty()) {
    add("output", Quoted(scene.output));
  }
  if (!scene.frames.empty()) {
    add("frames", Quoted(scene.frames));
  }
  if (!scene.fps.empty()) {
    add("fps", Quoted(scene.fps));
  }
  if (scene.retime) {
    add("retime", "true");
  }
  add("shutter", fmt::format("{}  # degrees", scene.shutterDegrees));
  if (scene.depth) {
    add("depth", Quoted(FormatDepth({*scene.depth, scene.encoding.isHalf})));
  }
  add("alpha", Quoted(FormatAlphaForm(scene.alpha)));
  if (!scene.encoding.compression.empty()) {
    add("compression", Quoted(scene.encoding.compression));
  }
  if (!scene.encoding.codec.empty()) {
    add("codec", Quoted(scene.encoding.codec));
  }
  if (scene.encoding.quality) {
    add("quality", fmt::format("{}", *scene.encoding.quality));
  }
  if (scene.encoding.sound != SoundWish::kAuto) {
    add("sound", Quoted(FormatSound(scene.encoding.sound)));
  }
  add("proxy", fmt::format("{}", scene.proxy));
  if (scene.pixelAspect) {
    add("pixel-aspect", fmt::format("{}", *scene.pixelAspect));
  }
  return text;
}

std::string ParametersText(const minihost::ParameterSet& parameters) {
  const ParameterNames names(parameters.List());
  std::string text = "\n[parameters]\n";
  std::string group;
  for (const ParameterInfo& parameter : parameters.List()) {
    if (!parameter.HasValue()) {
      continue;
    }
    if (parameter.group != group) {
      group = parameter.group;
      text += group.empty() ? "\n" : fmt::format("\n# {}\n", group);
    }
    text += fmt::format("{} = {}{}\n", KeyText(NameOf(parameter, names)),
                        TrackText(parameter, parameters.TrackOf(parameter.index)),
                        parameter.type == PF_Param_POINT ? "  # percent of the layer" : "");
  }
  return text;
}

}  // namespace

std::string WriteScene(const Scene& scene) {
  std::string text = RenderText(scene) + ParametersText(scene.parameters);
  try {
    ParseToml(text, "the scene");
  } catch (const ToolError& error) {
    Refuse(error.Code(), "a scene file cannot hold this render: {}", error.what());
  }
  return text;
}

}  // namespace cli
