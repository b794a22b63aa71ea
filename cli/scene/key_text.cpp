#include "cli/scene/key_text.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>

#include "cli/report/error.h"
#include "cli/report/nearest_name.h"
#include "cli/report/number.h"
#include "cli/scene/parameter_names.h"
#include "cli/scene/parameter_text.h"

namespace cli {
namespace {

using minihost::Ease;
using minihost::Key;
using minihost::ParameterInfo;

constexpr double kLastFrame = INT32_MAX;

constexpr std::string_view kEases[] = {"hold", "linear", "smooth"};  // in the order of Ease

/// One key, FRAME=VALUE[:EASE].
Key ParseKey(const ParameterInfo& parameter, std::string_view text) {
  const std::size_t equals = text.find('=');
  const auto frame = ParseNumber<double>(text.substr(0, equals));
  if (equals == text.npos || !frame) {
    Refuse(ExitCode::kUsage,
           "{}: '{}' is not a key; write frame=value or frame=value:ease, as in 48=400:smooth",
           parameter.DisplayName(), text);
  }
  std::string value(text.substr(equals + 1));
  Ease ease = Ease::kLinear;
  if (const std::size_t colon = value.find(':'); colon != value.npos) {
    ease =
        About(parameter.DisplayName(), [&] { return ParseEase(std::string_view(value).substr(colon + 1)); });
    value.erase(colon);
  }
  std::ranges::replace(value, ';', ',');
  return {*frame, ParseValue(parameter, value), ease};
}

}  // namespace

Ease ParseEase(std::string_view text) {
  const auto ease = std::ranges::find(kEases, text);
  if (ease == std::end(kEases)) {
    Refuse(ExitCode::kUsage, "'{}' is not hold, linear or smooth{}", text, SuggestNearest(text, kEases));
  }
  return static_cast<Ease>(ease - std::begin(kEases));
}

std::string_view FormatEase(Ease ease) {
  return kEases[static_cast<std::size_t>(ease)];
}

KeyCollector::KeyCollector(const ParameterInfo& parameter) : parameter_(parameter) {
  if (!parameter.animatable) {
    Refuse(ExitCode::kUsage, "{} cannot be animated; give it one value", parameter.DisplayName());
  }
}

void KeyCollector::Add(const Key& key) {
  if (!(std::abs(key.frame) <= kLastFrame)) {
    Refuse(ExitCode::kUsage, "{}: a key at frame {} is beyond the frames that can be counted, {} to {}",
           parameter_.DisplayName(), key.frame, -kLastFrame, kLastFrame);
  }
  if (!frames_.insert(key.frame).second) {
    Refuse(ExitCode::kUsage, "{}: frame {} has two keys; leave one of them", parameter_.DisplayName(),
           key.frame);
  }
  keys_.push_back(key);
}

minihost::Track KeyCollector::Finish() const {
  if (keys_.empty()) {
    Refuse(ExitCode::kUsage, "{}: there are no keys; give it one at least, or a value",
           parameter_.DisplayName());
  }
  return minihost::Track(keys_);
}

void AssignKeys(minihost::ParameterSet& parameters, std::string_view text) {
  const std::size_t at = text.find('@');
  if (at == text.npos) {
    Refuse(ExitCode::kUsage, "'{}' has no keys; write a name, @ and keys: Speed@0=100,48=400", text);
  }
  const ParameterInfo& parameter = ParameterNames(parameters.List()).Find(text.substr(0, at));
  KeyCollector keys(parameter);
  for (std::size_t begin = at + 1; begin <= text.size();) {
    const std::size_t end = std::min(text.find(',', begin), text.size());
    keys.Add(ParseKey(parameter, text.substr(begin, end - begin)));
    begin = end + 1;
  }
  parameters.Set(parameter.index, keys.Finish());
}

}  // namespace cli
