#include "cli/scene/scene.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>

#include "cli/report/error.h"

namespace cli {
namespace {

using minihost::Depth;
using minihost::Track;

// The widest and narrowest pixels that picture files are believed to have.
constexpr double kMostAspect = 100;

constexpr std::pair<Depth, std::string_view> kDepths[] = {
    {Depth::kBits8, "8"}, {Depth::kBits16, "16"}, {Depth::kFloat, "float"}};
constexpr std::pair<AlphaForm, std::string_view> kAlphaForms[] = {
    {AlphaForm::kStraight, "straight"}, {AlphaForm::kPremultiplied, "premultiplied"}};

template <class Choice, std::size_t count>
std::string_view NameOf(const std::pair<Choice, std::string_view> (&choices)[count], Choice choice) {
  return std::ranges::find(choices, choice, &std::pair<Choice, std::string_view>::first)->second;
}

template <class Choice, std::size_t count>
Choice ParseChoice(const std::pair<Choice, std::string_view> (&choices)[count], std::string_view text) {
  std::string names;
  for (std::size_t i = 0; i < count; ++i) {
    if (choices[i].second == text) {
      return choices[i].first;
    }
    names += fmt::format("{}{}", i == 0 ? "" : i + 1 == count ? " or " : ", ", choices[i].second);
  }
  Refuse(ExitCode::kUsage, "'{}' is not {}", text, names);
}

bool SameCourse(const Track& one, const Track& other) {
  if (!one.Animated() && !other.Animated()) {
    return one.Keys().front().value == other.Keys().front().value;
  }
  const auto& keys = one.Keys();
  const auto& others = other.Keys();
  if (keys.size() != others.size()) {
    return false;
  }
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (keys[i].frame != others[i].frame || keys[i].value != others[i].value) {
      return false;
    }
    if (i + 1 < keys.size() && keys[i].ease != others[i].ease) {
      return false;
    }
  }
  return true;
}

bool SameParameters(const minihost::ParameterSet& one, const minihost::ParameterSet& other) {
  return one.List().size() == other.List().size() &&
         std::ranges::all_of(one.List(), [&](const minihost::ParameterInfo& parameter) {
           return !parameter.HasValue() ||
                  SameCourse(one.TrackOf(parameter.index), other.TrackOf(parameter.index));
         });
}

auto RenderSettings(const Scene& scene) {
  return std::tie(scene.input, scene.blank, scene.output, scene.frames, scene.fps, scene.shutterDegrees,
                  scene.depth, scene.alpha, scene.compression, scene.proxy, scene.pixelAspect);
}

}  // namespace

bool operator==(const Scene& one, const Scene& other) {
  return RenderSettings(one) == RenderSettings(other) && SameParameters(one.parameters, other.parameters);
}

Depth ParseDepth(std::string_view text) {
  return ParseChoice(kDepths, text);
}

std::string_view FormatDepth(Depth depth) {
  return NameOf(kDepths, depth);
}

AlphaForm ParseAlphaForm(std::string_view text) {
  return ParseChoice(kAlphaForms, text);
}

std::string_view FormatAlphaForm(AlphaForm form) {
  return NameOf(kAlphaForms, form);
}

void CheckShutter(double degrees) {
  if (degrees >= kMinShutterDegrees && degrees <= kMaxShutterDegrees) {
    return;
  }
  Refuse(ExitCode::kUsage,
         "{} is not between {} and {} degrees (no shutter at all would count as one open for the whole "
         "frame; the least blur is {})",
         degrees, kMinShutterDegrees, kMaxShutterDegrees, kMinShutterDegrees);
}

void CheckProxy(double divisor) {
  if (divisor != 1 && divisor != 2 && divisor != 4) {
    Refuse(ExitCode::kUsage, "{} is not 1, 2 or 4, the whole, half or quarter size", divisor);
  }
}

void CheckPixelAspect(double aspect) {
  if (!(aspect >= 1 / kMostAspect && aspect <= kMostAspect)) {
    Refuse(ExitCode::kUsage, "{} is not a pixel's width over its height, {} to {}", aspect, 1 / kMostAspect,
           kMostAspect);
  }
}

}  // namespace cli
