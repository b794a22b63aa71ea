#include "cli/check/scenario.h"

#include <fmt/format.h>

#include <stdexcept>

namespace cli::check {
namespace {

// Flakes enough for two reports of progress, close enough and large enough to be seen.
Subject::Numbers Few(const Subject::Numbers& changes) {
  Subject::Numbers numbers{{"Flakes", 140}, {"Size", 6}, {"Scene Depth", 300}};
  numbers.insert(numbers.end(), changes.begin(), changes.end());
  return numbers;
}

}  // namespace

std::span<const Scenario> Scenarios() {
  static const std::vector<Scenario> kScenarios = {
      {.name = "defaults", .numbers = Few({})},
      {.name = "over transparent", .numbers = Few({{"Composite With Original", 0}}), .hasLayer = false},
      {.name = "no light", .numbers = Few({{"Influence %", 0}})},
      {.name = "cosine wiggle", .numbers = Few({{"Stochastic Wiggle", 0}}), .hasNoise = false},
      {.name = "no wiggle",
       .numbers = Few({{"Amount", 0}, {"Flake Flatness %", 0}, {"Transfer Mode", 1}}),
       .hasNoise = false},
      {.name = "16 flakes", .numbers = Few({{"Flakes", 16}, {"Embed Depth %", 40}})},
      {.name = "late frame", .numbers = Few({{"Flakes", 20}}), .time = 40},
      {.name = "no record", .numbers = Few({{"Flakes", 20}}), .hasRecord = false},
  };
  return kScenarios;
}

std::string_view NameOf(minihost::Depth depth) {
  return depth == minihost::Depth::kBits8    ? "8 bits"
         : depth == minihost::Depth::kBits16 ? "16 bits"
                                             : "float";
}

std::string_view NameOf(minihost::Protocol protocol) {
  return protocol == minihost::Protocol::kSmart ? "smart" : "plain";
}

Stage::Stage(const Layout& layout)
    : stripes(Stripes(GuardedImage(layout).Picture())), input(layout), output(layout) {
  input.SetPixels(stripes);
}

minihost::Frame Stage::Begin(minihost::Protocol protocol, std::int32_t time) {
  output.Fill(kMarker);
  minihost::Frame frame;
  frame.time = time;
  frame.protocol = protocol;
  frame.input = &input.Picture();
  frame.output = &output.Picture();
  return frame;
}

std::vector<std::byte> Stage::Render(minihost::Instance& instance, const minihost::Frame& frame) {
  const minihost::RenderResult result = instance.Render(frame);
  if (result.err != PF_Err_NONE) {
    throw std::runtime_error(
        fmt::format("a frame like any other failed with {}: {}", result.err, result.message));
  }
  return output.Pixels();
}

std::string Damage(const Stage& stage) {
  if (std::string damage = stage.output.Damage(); !damage.empty()) {
    return "in the output: " + damage;
  }
  if (std::string damage = stage.input.Damage(); !damage.empty()) {
    return "in the input: " + damage;
  }
  return stage.input.HasPixels(stage.stripes) ? "" : "the input's pixels were changed";
}

}  // namespace cli::check
