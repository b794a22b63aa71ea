// A parameter's course over time: one value throughout, or keys with an ease from each to the next.
#pragma once

#include <variant>
#include <vector>

namespace minihost {

/// Channels 0..255, 255 is full.  Fractions are kept while keys are interpolated and rounded to whole numbers
/// where the effect reads them.
struct Color {
  double red = 0;
  double green = 0;
  double blue = 0;
  bool operator==(const Color&) const = default;
};

/// Percent of the layer's width and height from its top-left corner; 50, 50 is the centre.  May lie outside.
struct Point {
  double x = 0;
  double y = 0;
  bool operator==(const Point&) const = default;
};

/// A number stands for sliders, for checkboxes (0 off, 1 on) and for popups (choices count from 1).
using Value = std::variant<double, Color, Point>;

/// How a key leads to the next.  `t` runs from 0 at this key to 1 at the next.
enum class Ease {
  kHold,    // stays at this key's value until the next key's frame
  kLinear,  // this + (next - this) * t
  kSmooth,  // this + (next - this) * t * t * (3 - 2 * t): starts and ends at rest
};

struct Key {
  double frame = 0;  // in layer frames; fractions and negative frames are allowed
  Value value;
  Ease ease = Ease::kLinear;
};

class Track {
 public:
  /// The same value at every time.  Throws std::invalid_argument unless every component is finite.
  Track(Value constant);

  /// Keys in any order.  Throws std::invalid_argument when there are none, when two share a frame, when a
  /// frame or a component is not finite, or when they do not all hold the same kind of value.
  explicit Track(std::vector<Key> keys);

  /// Before the first key its value, after the last key its value, on a key exactly that key's value.
  Value At(double frame) const;

  /// Whether it has more than one key, even where all hold the same value.
  bool Animated() const noexcept { return keys_.size() > 1; }

  /// In the order of their frames; a constant is one key at frame 0.
  const std::vector<Key>& Keys() const noexcept { return keys_; }

 private:
  std::vector<Key> keys_;
};

}  // namespace minihost
