#include "minihost/call/checkout.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace minihost {
namespace {

// Rounded to the nearest 1/65536; what 16.16 cannot hold ends at its limits.
PF_Fixed FixedOf(double value) noexcept {
  constexpr double kLow = std::numeric_limits<PF_Fixed>::min();
  constexpr double kHigh = std::numeric_limits<PF_Fixed>::max();
  return static_cast<PF_Fixed>(std::clamp(std::round(value * 65536.0), kLow, kHigh));
}

std::uint8_t ByteOf(double channel) noexcept {
  return static_cast<std::uint8_t>(std::lround(channel));
}

// Each kind has a record of its own, with nothing in common but the name of a member.
void StoreNumber(double number, PF_ParamDef& definition) noexcept {
  const auto whole = static_cast<std::int32_t>(std::lround(number));
  switch (definition.param_type) {
    case PF_Param_SLIDER:
      definition.u.sd.value = whole;
      break;
    case PF_Param_FLOAT_SLIDER:
      definition.u.fs_d.value = number;
      break;
    case PF_Param_CHECKBOX:
      definition.u.bd.value = whole;
      break;
    case PF_Param_POPUP:
      definition.u.pd.value = whole;
      break;
  }
}

void Store(const Value& value, const CommandScene& scene, PF_ParamDef& definition) noexcept {
  if (const auto* number = std::get_if<double>(&value)) {
    StoreNumber(*number, definition);
  } else if (const auto* color = std::get_if<Color>(&value)) {
    definition.u.cd.value = {255, ByteOf(color->red), ByteOf(color->green), ByteOf(color->blue)};
  } else {
    const Point& point = *std::get_if<Point>(&value);
    definition.u.td.x_value = FixedOf(point.x / 100 * scene.layerWidth);
    definition.u.td.y_value = FixedOf(point.y / 100 * scene.layerHeight);
  }
}

}  // namespace

PF_ParamDef DefinitionAt(const Session& session, const CommandScene& scene, int index, double layerFrame) {
  const auto slot = static_cast<std::size_t>(index);
  PF_ParamDef definition = session.definitions[slot];
  if (definition.param_type == PF_Param_LAYER) {
    definition.u.ld = index == 0 ? scene.input : PF_LayerDef{};
  } else if (scene.parameters->List()[slot].HasValue()) {
    const bool isElsewhere = scene.hooks != nullptr && scene.hooks->value;
    Store(isElsewhere ? scene.hooks->value(index, layerFrame) : scene.parameters->At(index, layerFrame),
          scene, definition);
  }
  return definition;
}

std::vector<PF_ParamDef> DefinitionsAt(const Session& session, const CommandScene& scene, double layerFrame) {
  std::vector<PF_ParamDef> definitions;
  definitions.reserve(session.definitions.size());
  for (int index = 0; index < std::ssize(session.definitions); ++index) {
    definitions.push_back(DefinitionAt(session, scene, index, layerFrame));
  }
  return definitions;
}

std::vector<PF_ParamDef*> AddressesOf(std::vector<PF_ParamDef>& definitions) {
  std::vector<PF_ParamDef*> addresses;
  addresses.reserve(definitions.size());
  for (PF_ParamDef& definition : definitions) {
    addresses.push_back(&definition);
  }
  return addresses;
}

double LayerFrameAt(const CommandScene& scene, std::int32_t ticks, std::uint32_t timeScale) noexcept {
  const FrameTiming& timing = scene.timing;
  if (timing.localTimeStep == 0) {
    return 0;
  }
  double sceneTicks = ticks;
  if (timeScale != timing.timeScale) {
    if (timeScale == 0) {
      return 0;
    }
    sceneTicks = sceneTicks * timing.timeScale / timeScale;
  }
  return sceneTicks / std::abs(static_cast<double>(timing.localTimeStep));
}

}  // namespace minihost
