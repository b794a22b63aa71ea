#include "web/engine/words.h"

#include <string>

#include "cli/scene/key_text.h"
#include "cli/scene/parameter_names.h"
#include "cli/scene/parameter_text.h"
#include "cli/scene/reader.h"
#include "cli/scene/toml_file.h"

namespace web {
namespace {

using cli::Json;
using minihost::ParameterInfo;

std::string_view TypeOf(const ParameterInfo& parameter) {
  switch (parameter.type) {
    case PF_Param_GROUP_START:
      return "group";
    case PF_Param_GROUP_END:
      return "groupEnd";
    case PF_Param_FLOAT_SLIDER:
      return "slider";
    default:
      return cli::DescribeType(parameter);
  }
}

Json Describe(const ParameterInfo& parameter, const cli::ParameterNames& names) {
  const bool isGroup = parameter.type == PF_Param_GROUP_START;
  const bool hasPercent = parameter.name.find('%') != std::string::npos;
  return {
      {"index", parameter.index},
      {"id", parameter.id},
      {"slug", parameter.HasValue() ? names.SlugOf(parameter)
               : isGroup            ? cli::Slug(parameter.DisplayName())
                                    : ""},
      {"name", parameter.name},
      {"label", parameter.label},
      {"displayName", parameter.DisplayName()},
      {"group", cli::Slug(parameter.group)},
      {"type", TypeOf(parameter)},
      {"animatable", parameter.animatable},
      {"collapsed", parameter.collapsed},
      {"default", parameter.HasValue() ? JsonOf(*parameter.defaultValue) : Json()},
      {"validMin", parameter.validMin},
      {"validMax", parameter.validMax},
      {"sliderMin", parameter.sliderMin},
      {"sliderMax", parameter.sliderMax},
      {"decimals", parameter.decimals},
      {"percent", hasPercent},
      {"choices", parameter.choices},
      {"restrictedToLayer", parameter.restrictedToLayer},
  };
}

/// "pixel-aspect" as pages write it, pixelAspect.
std::string CamelCase(std::string_view key) {
  std::string camel;
  bool gap = false;
  for (const char letter : key) {
    if (letter == '-') {
      gap = true;
      continue;
    }
    camel += gap && letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    gap = false;
  }
  return camel;
}

/// One key of [render]; the reader has found its type right.
Json RenderValue(std::string_view key, const toml::node& node, const cli::Scene& scene) {
  // These may be numbers or text in a file.
  if (key == "frames") {
    return scene.frames;
  }
  if (key == "fps") {
    return scene.fps;
  }
  if (key == "depth") {
    return cli::FormatDepth({*scene.depth, scene.encoding.isHalf});
  }
  if (const auto text = node.value_exact<std::string>()) {
    return *text;
  }
  if (node.is_boolean()) {
    return *node.value<bool>();
  }
  return node.is_integer() ? Json(*node.value<std::int64_t>()) : Json(*node.value<double>());
}

}  // namespace

Json DescribeParameters(const minihost::ParameterList& list) {
  const cli::ParameterNames names(list);
  Json all = Json::array();
  for (const ParameterInfo& parameter : list) {
    if (parameter.type != PF_Param_LAYER) {
      all.push_back(Describe(parameter, names));
    }
  }
  return all;
}

Json JsonOf(const minihost::Value& value) {
  if (const auto* color = std::get_if<minihost::Color>(&value)) {
    return Json::array({color->red, color->green, color->blue});
  }
  if (const auto* point = std::get_if<minihost::Point>(&value)) {
    return Json::array({point->x, point->y});
  }
  return std::get<double>(value);
}

Json JsonOf(const minihost::Track& track) {
  if (!track.Animated()) {
    return JsonOf(track.Keys().front().value);
  }
  Json keys = Json::array();
  for (const minihost::Key& key : track.Keys()) {
    keys.push_back({{"frame", key.frame}, {"value", JsonOf(key.value)}, {"ease", cli::FormatEase(key.ease)}});
  }
  return {{"keys", keys}};
}

Json ReadSceneText(std::string_view text, std::string_view name, const minihost::SharedParameterList& list) {
  cli::Scene scene(list);
  cli::ApplySceneText(text, name, scene);
  const toml::table document = cli::ParseToml(text, name);
  Json render = Json::object();
  if (const toml::table* section = document["render"].as_table()) {
    for (const auto& [key, node] : cli::EntriesOf(*section)) {
      render[CamelCase(key->str())] = RenderValue(key->str(), *node, scene);
    }
  }
  Json parameters = Json::object();
  if (const toml::table* section = document["parameters"].as_table()) {
    const cli::ParameterNames names(*list);
    for (const auto& [key, node] : cli::EntriesOf(*section)) {
      const ParameterInfo& parameter = names.Find(key->str());
      parameters[names.SlugOf(parameter)] = JsonOf(scene.parameters.TrackOf(parameter.index));
    }
  }
  Json read = {{"render", render}, {"parameters", parameters}};
  if (const toml::table* label = document["preset"].as_table()) {
    for (const auto& [key, node] : cli::EntriesOf(*label)) {
      read["preset"][std::string(key->str())] = node->value<std::string>().value_or("");
    }
  }
  return read;
}

}  // namespace web
