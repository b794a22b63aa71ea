#include "minihost/parameter/track.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace minihost {
namespace {

bool IsFinite(const Value& value) noexcept {
  if (const auto* number = std::get_if<double>(&value)) {
    return std::isfinite(*number);
  }
  if (const auto* color = std::get_if<Color>(&value)) {
    return std::isfinite(color->red) && std::isfinite(color->green) && std::isfinite(color->blue);
  }
  const Point& point = std::get<Point>(value);
  return std::isfinite(point.x) && std::isfinite(point.y);
}

[[noreturn]] void Refuse(const Key& key, const char* why) {
  std::ostringstream text;
  text << "the key at frame " << key.frame << " " << why;
  throw std::invalid_argument(text.str());
}

double Mix(double from, double to, double t) noexcept {
  return from + (to - from) * t;
}

// Both hold the same kind.
Value Mix(const Value& from, const Value& to, double t) {
  if (const auto* a = std::get_if<double>(&from)) {
    return Mix(*a, std::get<double>(to), t);
  }
  if (const auto* a = std::get_if<Color>(&from)) {
    const Color& b = std::get<Color>(to);
    return Color{Mix(a->red, b.red, t), Mix(a->green, b.green, t), Mix(a->blue, b.blue, t)};
  }
  const Point& a = std::get<Point>(from);
  const Point& b = std::get<Point>(to);
  return Point{Mix(a.x, b.x, t), Mix(a.y, b.y, t)};
}

}  // namespace

Track::Track(Value constant) : Track(std::vector<Key>{{0, constant, Ease::kHold}}) {}

Track::Track(std::vector<Key> keys) : keys_(std::move(keys)) {
  if (keys_.empty()) {
    throw std::invalid_argument("a track without keys has no value");
  }
  for (const Key& key : keys_) {
    if (!std::isfinite(key.frame)) {
      Refuse(key, "stands at no finite time");
    }
    if (!IsFinite(key.value)) {
      Refuse(key, "holds a value that is not finite");
    }
    if (key.value.index() != keys_.front().value.index()) {
      Refuse(key, "holds another kind of value than the first key");
    }
  }
  std::sort(keys_.begin(), keys_.end(), [](const Key& a, const Key& b) { return a.frame < b.frame; });
  const auto twin = std::adjacent_find(keys_.begin(), keys_.end(),
                                       [](const Key& a, const Key& b) { return a.frame == b.frame; });
  if (twin != keys_.end()) {
    Refuse(*twin, "is not the only one there");
  }
}

Value Track::At(double frame) const {
  const auto next = std::upper_bound(keys_.begin(), keys_.end(), frame,
                                     [](double time, const Key& key) { return time < key.frame; });
  if (next == keys_.begin()) {
    return keys_.front().value;
  }
  const Key& key = *(next - 1);
  if (next == keys_.end() || key.ease == Ease::kHold || key.frame == frame) {
    return key.value;
  }

  const double t = (frame - key.frame) / (next->frame - key.frame);
  return Mix(key.value, next->value, key.ease == Ease::kSmooth ? t * t * (3 - 2 * t) : t);
}

}  // namespace minihost
