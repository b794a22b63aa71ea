#include "tests/sameness/looks.h"

#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace sameness {
namespace {

using minihost::Depth;
using minihost::Ease;
using minihost::Image;
using minihost::Key;
using minihost::Track;

constexpr std::pair<Depth, std::string_view> kDepths[] = {
    {Depth::kBits8, "8"}, {Depth::kBits16, "16"}, {Depth::kFloat, "float"}};

Track Number(double value) {
  return Track(minihost::Value(value));
}

const Track kSpeed(std::vector<Key>{{-5, 100.0, Ease::kSmooth}, {20, 500.0}});
const Track kWind(std::vector<Key>{{0, 0.0, Ease::kHold}, {7, 80.0}});
const Track kOffset(std::vector<Key>{{2, minihost::Point{50, 50}}, {12, minihost::Point{20.5, 80}}});
const Track kColor(std::vector<Key>{{0, minihost::Color{255, 0, 8}}, {30, minihost::Color{1, 200, 90}}});

const std::vector<Look> kLooks = {
    {.name = "defaults"},
    {.name = "plain-protocol", .protocol = minihost::Protocol::kPlain},
    {.name = "composite", .tracks = {{"Transfer Mode", Number(1)}}},
    {.name = "dark", .tracks = {{"Influence %", Number(0)}}},
    {.name = "lit", .tracks = {{"Influence %", Number(100)}}},
    {.name = "cosine-wiggle",
     .tracks = {{"Stochastic Wiggle", Number(0)}, {"Spread", Number(15.9)}},
     .time = 500},
    {.name = "keys", .tracks = {{"Speed", kSpeed}, {"Wind", kWind}, {"Offset", kOffset}, {"Color", kColor}}},
    {.name = "keys-late", .tracks = {{"Speed", kSpeed}, {"Wind", kWind}}, .time = 250'000},
    {.name = "before-zero", .tracks = {{"Wind", kWind}}, .time = -3, .shutter = 360},
    {.name = "half-size", .reduction = 2},
    {.name = "quarter-size", .reduction = 4, .aspect = {3, 2}},
    {.name = "wide-pixels", .aspect = {768, 1405}, .shutter = 720},
    {.name = "over-transparent", .tracks = {{"Composite With Original", Number(0)}}, .hasLayer = false},
    {.name = "large", .tracks = {{"Size", Number(15)}, {"Opacity", Number(60)}}},
};

std::string BytesOf(const Image& image) {
  const std::size_t rowSize =
      static_cast<std::size_t>(image.Width()) * minihost::BytesPerPixel(image.PixelDepth());
  std::string bytes;
  for (int row = 0; row < image.Height(); ++row) {
    const std::byte* first = image.Data() + static_cast<std::size_t>(row) * image.RowBytes();
    bytes.append(reinterpret_cast<const char*>(first), rowSize);
  }
  return bytes;
}

std::uint64_t HashOf(std::string_view bytes) {
  std::uint64_t hash = 0xcbf29ce484222325u;
  for (const char byte : bytes) {
    hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3u;
  }
  return hash;
}

std::string ReadFile(const char* name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void PrintFirstDifference(const Look& look, Depth depth, const std::string& expected,
                          const std::string& found) {
  const auto width = static_cast<std::size_t>(PlateOf(look, depth).Width());
  minihost::WithPixel(depth, [&]<class Pixel>(Pixel) {
    using Channel = decltype(Pixel::red);
    constexpr const char* kChannels[] = {"alpha", "red", "green", "blue"};
    for (std::size_t at = 0; at + sizeof(Channel) <= std::min(expected.size(), found.size());
         at += sizeof(Channel)) {
      if (std::memcmp(&expected[at], &found[at], sizeof(Channel)) != 0) {
        Channel values[2];
        std::memcpy(&values[0], &expected[at], sizeof(Channel));
        std::memcpy(&values[1], &found[at], sizeof(Channel));
        const std::size_t pixel = at / sizeof(Pixel);
        std::printf("  first at column %zu, row %zu: %s is %.9g, not %.9g\n", pixel % width, pixel / width,
                    kChannels[at / sizeof(Channel) % 4], static_cast<double>(values[1]),
                    static_cast<double>(values[0]));
        return;
      }
    }
    std::printf("  %zu bytes, not %zu\n", found.size(), expected.size());
  });
}

void PrintAll(const Front& front) {
  for (const Look& look : kLooks) {
    for (const auto& [depth, name] : kDepths) {
      if (const std::optional<Image> image = front(look, depth)) {
        std::printf("%s %s %016llx\n", look.name, name.data(),
                    static_cast<unsigned long long>(HashOf(BytesOf(*image))));
      }
    }
  }
}

}  // namespace

const std::vector<Look>& Looks() {
  return kLooks;
}

minihost::ParameterSet ParametersOf(const Look& look, minihost::SharedParameterList list) {
  minihost::ParameterSet parameters(std::move(list));
  parameters.Set("Flakes", Number(1500));
  parameters.Set("Scene Depth", Number(1500));
  for (const auto& [name, track] : look.tracks) {
    parameters.Set(name, track);
  }
  return parameters;
}

// A linear congruence's high bytes, brought to the depth.
Image PlateOf(const Look& look, Depth depth) {
  Image plate(211 / look.reduction, 119 / look.reduction, depth);
  std::uint32_t state = 7;
  minihost::WithPixel(depth, [&]<class Pixel>(Pixel) {
    using Channel = decltype(Pixel::red);
    const double white = depth == Depth::kBits8 ? 255 : depth == Depth::kBits16 ? 32768 : 1;
    const auto next = [&] {
      state = state * 1664525u + 1013904223u;
      return !look.hasLayer ? Channel{}
                            : static_cast<Channel>(static_cast<double>(state >> 24) / 255.0 * white);
    };
    for (int row = 0; row < plate.Height(); ++row) {
      for (Pixel& one : plate.Row<Pixel>(row)) {
        one = {next(), next(), next(), next()};
      }
    }
  });
  return plate;
}

int Run(const Front& front, int count, char** arguments) {
  try {
    if (count == 0) {
      PrintAll(front);
      return 0;
    }
    for (const Look& look : kLooks) {
      for (const auto& [depth, name] : kDepths) {
        if (count < 3 || arguments[0] != std::string_view(look.name) || arguments[1] != name) {
          continue;
        }
        if (count == 4) {
          PrintFirstDifference(look, depth, ReadFile(arguments[2]), ReadFile(arguments[3]));
        } else {
          std::ofstream(arguments[2], std::ios::binary) << BytesOf(front(look, depth).value());
        }
        return 0;
      }
    }
    throw std::runtime_error("no such frame");
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}

}  // namespace sameness
