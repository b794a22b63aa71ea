// One use of the effect by a host of this standard: settings, times and pixels in, pixels out.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "bindings/frei0r/clock.h"
#include "bindings/frei0r/history.h"
#include "bindings/frei0r/parameters.h"
#include "minihost/instance.h"

namespace frei0r {

/// What all instances share.
struct SnowEffect {
  std::shared_ptr<const minihost::Effect> effect;
  std::vector<Parameter> parameters;
};

/// Made when first asked for, for as long as the module is loaded.  Throws as minihost::Effect does.
const SnowEffect& TheEffect();

/// Not for two threads at once; different ones are independent.  Needs little memory until the first frame.
class Snow {
 public:
  /// Pixels a side, 1 to minihost::Image::kMaxSide; throws std::invalid_argument beyond.
  Snow(unsigned width, unsigned height);

  void Set(std::size_t parameter, const Setting& setting) { settings_.at(parameter) = setting; }
  const Setting& Get(std::size_t parameter) const { return settings_.at(parameter); }

  /// Of a picture as hosts hand it over.
  std::size_t Bytes() const {
    return static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_) * 4;
  }

  /// Renders the frame at the host's time.  Pixels are red, green, blue, alpha, a byte each, straight alpha,
  /// in rows without padding from the top; `in` is null for snow over nothing, and may be `out`.  Throws what
  /// minihost does, and std::runtime_error when the effect fails.
  void Render(double time, const std::uint8_t* in, std::uint8_t* out);

 private:
  /// Brings the instance's parameters up to the settings of now, at this frame.
  void Follow(std::int32_t frame);
  minihost::Value ValueOf(std::size_t parameter) const;

  int width_;
  int height_;
  std::vector<Setting> settings_;   // by parameter of this standard
  std::vector<History> histories_;  // by parameter of the effect
  Clock clock_;
  std::unique_ptr<minihost::Instance> instance_;  // from the first frame on
  Rate renderedRate_;
  minihost::Image input_;
  minihost::Image output_;
};

}  // namespace frei0r
