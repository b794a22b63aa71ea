#include "cli/scene/parameters.h"

#include <fmt/format.h>

#include <map>
#include <string>
#include <utility>

#include "cli/report/error.h"
#include "cli/report/nearest_name.h"
#include "cli/scene/key_text.h"
#include "cli/scene/parameter_names.h"
#include "cli/scene/parameter_text.h"
#include "cli/scene/toml_file.h"

namespace cli {
namespace {

using minihost::Ease;
using minihost::Key;
using minihost::ParameterInfo;
using minihost::ParameterSet;
using minihost::Value;

// Longer names are not worth a search for similar ones.
constexpr std::size_t kMaxNameLength = 200;

std::string_view ExpectedType(const ParameterInfo& parameter) {
  switch (parameter.type) {
    case PF_Param_CHECKBOX:
      return "true or false";
    case PF_Param_POPUP:
      return "a choice's name in quotes or its number";
    case PF_Param_COLOR:
      return "a colour as \"#rrggbb\"";
    case PF_Param_POINT:
      return "a point as [x, y] in percent";
    default:
      return "a number";
  }
}

/// The number with as many digits as tell it apart; empty for anything else.
std::string NumberText(const toml::node& node) {
  if (const auto integer = node.value_exact<std::int64_t>()) {
    return fmt::format("{}", *integer);
  }
  const auto number = node.value_exact<double>();
  return number ? fmt::format("{}", *number) : "";
}

/// The node as the command line would have it, when it is of the parameter's type; else empty.
std::string AssignmentText(const ParameterInfo& parameter, const toml::node& node) {
  switch (parameter.type) {
    case PF_Param_CHECKBOX:
      return node.is_boolean() ? *node.value<bool>() ? "on" : "off" : "";
    case PF_Param_POPUP:
      return node.is_integer() ? NumberText(node) : node.value_exact<std::string>().value_or("");
    case PF_Param_COLOR:
      return node.value_exact<std::string>().value_or("");
    case PF_Param_POINT: {
      const toml::array* pair = node.as_array();
      if (!pair || pair->size() != 2 || !(*pair)[0].is_number() || !(*pair)[1].is_number()) {
        return "";
      }
      return fmt::format("{},{}", NumberText((*pair)[0]), NumberText((*pair)[1]));
    }
    default:
      return NumberText(node);
  }
}

Value ReadValue(const ParameterInfo& parameter, const toml::node& node) {
  const std::string text = AssignmentText(parameter, node);
  if (text.empty()) {
    const bool malformedPoint = parameter.type == PF_Param_POINT && node.is_array();
    RefuseAt(node.source(), "{} takes {}, not {}{}", parameter.DisplayName(), ExpectedType(parameter),
             DescribeNode(node), malformedPoint ? " like this" : "");
  }
  return At(node.source(), [&] { return ParseValue(parameter, text); });
}

Ease ReadEase(const toml::node& node) {
  const auto text = node.value_exact<std::string>();
  if (!text) {
    RefuseAt(node.source(), "an ease is \"hold\", \"linear\" or \"smooth\", not {}", DescribeNode(node));
  }
  return At(node.source(), [&] { return ParseEase(*text); });
}

/// [frame, value] or [frame, value, ease].
Key ReadKey(const ParameterInfo& parameter, const toml::node& node, Ease defaultEase) {
  const toml::array* key = node.as_array();
  if (!key || key->size() < 2 || key->size() > 3 || !(*key)[0].is_number()) {
    RefuseAt(node.source(), "{}: a key is [frame, value] or [frame, value, ease], not {}{}",
             parameter.DisplayName(), DescribeNode(node), key ? " like this" : "");
  }
  return {*(*key)[0].value<double>(), ReadValue(parameter, (*key)[1]),
          key->size() == 3 ? ReadEase((*key)[2]) : defaultEase};
}

class ParametersReader {
 public:
  ParametersReader(ParameterSet& parameters) : parameters_(parameters), names_(parameters.List()) {}

  void Read(const toml::key& name, const toml::node& node) {
    if (name.str().size() > kMaxNameLength) {
      RefuseAt(name.source(), "this is longer than the name of any parameter");
    }
    const ParameterInfo& parameter =
        At(name.source(), [&]() -> const ParameterInfo& { return names_.Find(name.str()); });
    const auto [earlier, isNew] = nameOf_.try_emplace(parameter.index, name.str());
    if (!isNew) {
      RefuseAt(name.source(), "'{}' is {}, which '{}' has set already; leave one of them", name.str(),
               parameter.DisplayName(), earlier->second);
    }
    const toml::table* animation = node.as_table();
    parameters_.Set(parameter.index, animation ? ReadTrack(parameter, *animation)
                                               : minihost::Track(ReadValue(parameter, node)));
  }

 private:
  minihost::Track ReadTrack(const ParameterInfo& parameter, const toml::table& animation) {
    constexpr std::string_view kNames[] = {"keys", "ease"};
    for (const auto& [key, value] : EntriesOf(animation)) {
      if (key->str() == kNames[0] || key->str() == kNames[1]) {
        continue;
      }
      RefuseAt(key->source(), "{}: '{}' is neither keys nor ease{}", parameter.DisplayName(),
               key->str().substr(0, kMaxNameLength),
               SuggestNearest(key->str().substr(0, kMaxNameLength), kNames));
    }
    const toml::array* keys = animation["keys"].as_array();
    if (!keys) {
      RefuseAt(animation.source(), "{}: there are no keys; write {{ keys = [[frame, value], ...] }}",
               parameter.DisplayName());
    }
    keyCount_ += keys->size();
    if (keyCount_ > kMaxSceneKeys) {
      RefuseAt(keys->source(), "{} makes {} keys, and a scene has {} at most", parameter.DisplayName(),
               keyCount_, kMaxSceneKeys);
    }
    const toml::node* easeNode = animation.get("ease");
    const Ease ease = easeNode ? ReadEase(*easeNode) : Ease::kLinear;
    KeyCollector collector = At(keys->source(), [&] { return KeyCollector(parameter); });
    for (const toml::node& node : *keys) {
      const Key key = ReadKey(parameter, node, ease);
      At(node.source(), [&] { collector.Add(key); });
    }
    return At(keys->source(), [&] { return collector.Finish(); });
  }

  ParameterSet& parameters_;
  ParameterNames names_;
  std::map<int, std::string> nameOf_;  // by index, for those that are set
  std::size_t keyCount_ = 0;
};

}  // namespace

void ApplyParameters(const toml::table& section, ParameterSet& parameters) {
  ParametersReader reader(parameters);
  for (const auto& [key, value] : EntriesOf(section)) {
    reader.Read(*key, *value);
  }
}

}  // namespace cli
