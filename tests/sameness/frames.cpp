// Prints frames as lines, a name and a hash of all bytes: equal lines are equal frames, whoever compiled
// this. Each is made by the fast loop and by the plain one, in a line of its own where that is another.
//
//   frames PATH    best, kBaseline, kAvx2 or kAvx512, the one this was linked for; 77 where the machine has
//   not got it
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "minihost/instance.h"
#include "web/engine/plain_entry.h"

namespace {

using minihost::Depth;
using minihost::Ease;
using minihost::Image;
using minihost::Key;
using minihost::Track;

struct Look {
  const char* name;
  std::vector<std::pair<std::string_view, Track>> tracks = {};
  std::int32_t time = 10;
  minihost::Protocol protocol = minihost::Protocol::kSmart;
  std::uint32_t reduction = 1;
  PF_RationalScale aspect{1, 1};
  double shutter = 180;
  bool hasLayer = true;
};

Track Number(double value) {
  return Track(minihost::Value(value));
}

const Track kSpeed(std::vector<Key>{{-5, 100.0, Ease::kSmooth}, {20, 500.0}});
const Track kWind(std::vector<Key>{{0, 0.0, Ease::kHold}, {7, 80.0}});
const Track kOffset(std::vector<Key>{{2, minihost::Point{50, 50}}, {12, minihost::Point{20.5, 80}}});
const Track kColor(std::vector<Key>{{0, minihost::Color{255, 0, 8}}, {30, minihost::Color{1, 200, 90}}});

std::vector<Look> Looks() {
  using Protocol = minihost::Protocol;
  return {
      {.name = "defaults"},
      {.name = "plain-protocol", .protocol = Protocol::kPlain},
      {.name = "composite", .tracks = {{"Transfer Mode", Number(1)}}},
      {.name = "dark", .tracks = {{"Influence %", Number(0)}}},
      {.name = "lit", .tracks = {{"Influence %", Number(100)}}},
      {.name = "cosine-wiggle",
       .tracks = {{"Stochastic Wiggle", Number(0)}, {"Spread", Number(15.9)}},
       .time = 500},
      {.name = "keys",
       .tracks = {{"Speed", kSpeed}, {"Wind", kWind}, {"Offset", kOffset}, {"Color", kColor}}},
      {.name = "keys-late", .tracks = {{"Speed", kSpeed}, {"Wind", kWind}}, .time = 250'000},
      {.name = "before-zero", .tracks = {{"Wind", kWind}}, .time = -3, .shutter = 360},
      {.name = "half-size", .reduction = 2},
      {.name = "quarter-size", .reduction = 4, .aspect = {3, 2}},
      {.name = "wide-pixels", .aspect = {768, 1405}, .shutter = 720},
      {.name = "over-transparent", .tracks = {{"Composite With Original", Number(0)}}, .hasLayer = false},
      {.name = "large", .tracks = {{"Size", Number(15)}, {"Opacity", Number(60)}}},
  };
}

// A linear congruence's high bytes, brought to the depth.
Image PlateOf(int width, int height, Depth depth, bool isBlank) {
  Image plate(width, height, depth);
  std::uint32_t state = 7;
  minihost::WithPixel(depth, [&]<class Pixel>(Pixel) {
    using Channel = decltype(Pixel::red);
    const double white = depth == Depth::kBits8 ? 255 : depth == Depth::kBits16 ? 32768 : 1;
    const auto next = [&] {
      state = state * 1664525u + 1013904223u;
      return isBlank ? Channel{} : static_cast<Channel>(static_cast<double>(state >> 24) / 255.0 * white);
    };
    for (int row = 0; row < height; ++row) {
      for (Pixel& one : plate.Row<Pixel>(row)) {
        one = {next(), next(), next(), next()};
      }
    }
  });
  return plate;
}

std::uint64_t HashOf(const Image& image) {
  std::uint64_t hash = 0xcbf29ce484222325u;
  const std::size_t rowSize =
      static_cast<std::size_t>(image.Width()) * minihost::BytesPerPixel(image.PixelDepth());
  for (int row = 0; row < image.Height(); ++row) {
    const auto* bytes = image.Data() + static_cast<std::size_t>(row) * image.RowBytes();
    for (std::size_t i = 0; i < rowSize; ++i) {
      hash = (hash ^ std::to_integer<std::uint64_t>(bytes[i])) * 0x100000001b3u;
    }
  }
  return hash;
}

std::uint64_t Render(const Look& look, Depth depth, const std::shared_ptr<const minihost::Effect>& effect) {
  minihost::ParameterSet parameters(effect->SharedParameters());
  parameters.Set("Flakes", Number(1500));
  parameters.Set("Scene Depth", Number(1500));
  for (const auto& [name, track] : look.tracks) {
    parameters.Set(name, track);
  }
  const int divisor = static_cast<int>(look.reduction);
  const Image input = PlateOf(211 / divisor, 119 / divisor, depth, !look.hasLayer);
  Image output(input.Width(), input.Height(), depth);
  minihost::Frame frame;
  frame.time = look.time;
  frame.timing.shutterDegrees = look.shutter;
  frame.protocol = look.protocol;
  frame.downsampleX = frame.downsampleY = {1, look.reduction};
  frame.pixelAspectRatio = look.aspect;
  frame.input = &input;
  frame.output = &output;
  const minihost::RenderResult result = minihost::Instance(effect, parameters).Render(frame);
  if (result.err != PF_Err_NONE) {
    throw std::runtime_error(std::string(look.name) + ": code " + std::to_string(result.err));
  }
  return HashOf(output);
}

bool HasPath(std::string_view path) {
#if defined(__x86_64__)
  __builtin_cpu_init();
  if (path == "kAvx512") {
    return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
           __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
  }
  return path != "kAvx2" || __builtin_cpu_supports("avx2");
#else
  return path == "best";
#endif
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fprintf(stderr, "usage: frames PATH\n");
    return 2;
  }
  if (!HasPath(arguments[1])) {
    return 77;
  }
  try {
    const auto effect = minihost::Effect::Linked(&MainEntry);
    const auto plain = minihost::Effect::Linked(&web::PlainEntry);
    for (const Look& look : Looks()) {
      for (const auto& [depth, bits] :
           {std::pair{Depth::kBits8, "8"}, {Depth::kBits16, "16"}, {Depth::kFloat, "float"}}) {
        const std::uint64_t hash = Render(look, depth, effect);
        std::printf("%s %s %016llx\n", look.name, bits, static_cast<unsigned long long>(hash));
        if (const std::uint64_t plainHash = Render(look, depth, plain); plainHash != hash) {
          std::printf("%s %s %016llx by the plain loop\n", look.name, bits,
                      static_cast<unsigned long long>(plainHash));
        }
      }
    }
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
