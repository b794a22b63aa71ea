// Frames that take every way through the effect, small enough to be rendered a hundred thousand times.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cli/check/guarded_image.h"
#include "cli/check/subject.h"
#include "minihost/frame.h"

namespace cli::check {

struct Scenario {
  std::string_view name;
  Subject::Numbers numbers;
  std::int32_t time = 2;  // of 30 a second, each a frame of the layer
  bool hasNoise = true;   // a stochastic wiggle
  bool hasRecord = true;  // the instance has been set up; without, its first frame does it
  bool hasLayer = true;   // over the layer; else over transparent black
};

std::span<const Scenario> Scenarios();

inline constexpr minihost::Depth kDepths[] = {minihost::Depth::kBits8, minihost::Depth::kBits16,
                                              minihost::Depth::kFloat};
inline constexpr minihost::Protocol kProtocols[] = {minihost::Protocol::kSmart, minihost::Protocol::kPlain};

std::string_view NameOf(minihost::Depth depth);
std::string_view NameOf(minihost::Protocol protocol);

/// Two pictures of one layout, striped and blank, and the frame from one to the other.
class Stage {
 public:
  explicit Stage(const Layout& layout);

  /// The output begins with every byte a marker, which no picture consists of.
  minihost::Frame Begin(minihost::Protocol protocol, std::int32_t time);

  /// The pixels of a frame that Begin made.  Throws std::runtime_error unless the render succeeds.
  std::vector<std::byte> Render(minihost::Instance& instance, const minihost::Frame& frame);

  static constexpr std::byte kMarker{0x55};

  const std::vector<std::byte> stripes;
  GuardedImage input;
  GuardedImage output;
};

/// What is wrong with the pictures beside their pixels, or with the input; empty when nothing is.
std::string Damage(const Stage& stage);

}  // namespace cli::check
