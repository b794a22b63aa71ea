// A value, constant or animated, for each of an effect's parameters.
#pragma once

#include <string_view>
#include <vector>

#include "minihost/parameter/info.h"
#include "minihost/parameter/track.h"

namespace minihost {

/// Copyable; the parameter list is shared, the tracks are its own.
class ParameterSet {
 public:
  /// Every parameter at its declared default.
  explicit ParameterSet(SharedParameterList list);

  /// Replaces the course of one parameter.  Throws std::invalid_argument, naming the parameter, the value
  /// and the limit, when the parameter has no value or does not exist, the kind of value does not fit its
  /// type, a value lies outside the valid range, an integer, choice or checkbox is not whole, or keys are
  /// given for a parameter that cannot be animated.  On failure nothing changes.
  ///
  /// Between keys of a popup or a checkbox there is nothing to interpolate: their eases become kHold.
  void Set(int index, Track track);

  /// The same by display name, as FindParameter finds it.
  void Set(std::string_view displayName, Track track);

  /// The value at a layer frame.  Integer sliders come as whole numbers, colour channels as they are between
  /// keys.  `index` names a parameter with a value, else std::invalid_argument.
  Value At(int index, double frame) const;

  /// The course as Set left it.  `index` names a parameter with a value, else std::invalid_argument.
  const Track& TrackOf(int index) const;

  const ParameterList& List() const noexcept { return *list_; }

 private:
  const ParameterInfo& Holder(int index) const;

  SharedParameterList list_;
  std::vector<Track> tracks_;  // by index; unused where the parameter has no value
};

}  // namespace minihost
