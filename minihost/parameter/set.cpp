#include "minihost/parameter/set.h"

#include <cmath>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace minihost {
namespace {

bool IsStepped(const ParameterInfo& info) noexcept {
  return info.type == PF_Param_POPUP || info.type == PF_Param_CHECKBOX;
}

bool IsWholeNumbered(const ParameterInfo& info) noexcept {
  return info.type == PF_Param_SLIDER || IsStepped(info);
}

const char* KindOf(const Value& value) noexcept {
  constexpr const char* kKinds[] = {"a number", "a colour", "a point"};
  return kKinds[value.index()];
}

template <class... Parts>
[[noreturn]] void Refuse(const ParameterInfo& info, const Parts&... parts) {
  std::ostringstream text;
  text.precision(10);
  text << "\"" << info.DisplayName() << "\": ";
  (text << ... << parts);
  throw std::invalid_argument(text.str());
}

void RequireInside(const ParameterInfo& info, const char* what, double value, double low, double high) {
  if (value < low || value > high) {
    Refuse(info, what, " ", value, " is outside ", low, "..", high);
  }
}

void RequireFits(const ParameterInfo& info, const Value& value) {
  if (value.index() != info.defaultValue->index()) {
    Refuse(info, "takes ", KindOf(*info.defaultValue), ", not ", KindOf(value));
  }
  if (const auto* number = std::get_if<double>(&value)) {
    RequireInside(info, "value", *number, info.validMin, info.validMax);
    if (IsWholeNumbered(info) && *number != std::round(*number)) {
      Refuse(info, "value ", *number, " is not a whole number");
    }
  } else if (const auto* color = std::get_if<Color>(&value)) {
    RequireInside(info, "red", color->red, 0, 255);
    RequireInside(info, "green", color->green, 0, 255);
    RequireInside(info, "blue", color->blue, 0, 255);
  } else if (info.restrictedToLayer) {
    const Point& point = std::get<Point>(value);
    RequireInside(info, "x in percent", point.x, 0, 100);
    RequireInside(info, "y in percent", point.y, 0, 100);
  }
}

Track WithHolds(const Track& track) {
  std::vector<Key> keys = track.Keys();
  for (Key& key : keys) {
    key.ease = Ease::kHold;
  }
  return Track(std::move(keys));
}

}  // namespace

ParameterSet::ParameterSet(SharedParameterList list) : list_(std::move(list)) {
  tracks_.reserve(list_->size());
  for (const ParameterInfo& info : *list_) {
    tracks_.emplace_back(info.defaultValue.value_or(0.0));
  }
}

const ParameterInfo& ParameterSet::Holder(int index) const {
  if (index < 0 || index >= std::ssize(*list_)) {
    throw std::invalid_argument("parameter " + std::to_string(index) + " is outside 0.." +
                                std::to_string(std::ssize(*list_) - 1));
  }
  const ParameterInfo& info = (*list_)[static_cast<std::size_t>(index)];
  if (!info.HasValue()) {
    throw std::invalid_argument("parameter " + std::to_string(index) + " \"" + info.name +
                                "\" holds no value");
  }
  return info;
}

void ParameterSet::Set(int index, Track track) {
  const ParameterInfo& info = Holder(index);
  if (track.Animated() && !info.animatable) {
    Refuse(info, "cannot be animated, but has ", track.Keys().size(), " keys");
  }
  for (const Key& key : track.Keys()) {
    RequireFits(info, key.value);
  }
  tracks_[static_cast<std::size_t>(index)] = IsStepped(info) ? WithHolds(track) : std::move(track);
}

void ParameterSet::Set(std::string_view displayName, Track track) {
  const ParameterInfo* info = FindParameter(*list_, displayName);
  if (info == nullptr) {
    throw std::invalid_argument("there is no parameter \"" + std::string(displayName) + "\"");
  }
  Set(info->index, std::move(track));
}

Value ParameterSet::At(int index, double frame) const {
  const ParameterInfo& info = Holder(index);
  const Value value = tracks_[static_cast<std::size_t>(index)].At(frame);
  return info.type == PF_Param_SLIDER ? std::round(std::get<double>(value)) : value;
}

const Track& ParameterSet::TrackOf(int index) const {
  return tracks_[static_cast<std::size_t>(Holder(index).index)];
}

}  // namespace minihost
