// Snow on a picture through the host library: embed PLATE.ppm SNOW.ppm FRAME
// examples/CMakeLists.txt builds it against an installed Vintrel.
#include <cstdint>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

#include "minihost/instance.h"

namespace {

using minihost::Depth;
using minihost::Image;

Image ReadPpm(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string magic;
  int width = 0;
  int height = 0;
  int white = 0;
  if (!(file >> magic >> width >> height >> white) || magic != "P6" || white != 255) {
    throw std::runtime_error(path + ": not a PPM of 8 bits");
  }
  file.get();  // one space ends the header
  Image image(width, height, Depth::kBits8);
  const auto channel = [&] { return static_cast<std::uint8_t>(file.get()); };
  for (int row = 0; row < height; ++row) {
    for (PF_Pixel& pixel : image.Row<PF_Pixel>(row)) {
      pixel = {255, channel(), channel(), channel()};
    }
  }
  if (!file) {
    throw std::runtime_error(path + ": breaks off");
  }
  return image;
}

void WritePpm(const Image& image, const std::string& path) {
  std::ofstream file(path, std::ios::binary);
  file << "P6\n" << image.Width() << ' ' << image.Height() << "\n255\n";
  for (int row = 0; row < image.Height(); ++row) {
    for (const PF_Pixel& pixel : image.Row<PF_Pixel>(row)) {
      for (const std::uint8_t channel : {pixel.red, pixel.green, pixel.blue}) {
        file.put(static_cast<char>(channel));
      }
    }
  }
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 4) {
    throw std::runtime_error("usage: embed PLATE.ppm SNOW.ppm FRAME");
  }
  // The effect is linked in; Effect::Load takes one from a module.  One effect serves any number of
  // instances.
  const auto effect = minihost::Effect::Linked(&MainEntry);
  minihost::ParameterSet parameters(effect->SharedParameters());
  parameters.Set("Flakes", minihost::Track(30000.0));
  parameters.Set("Wind", minihost::Track({{.frame = 0, .value = 0.0}, {.frame = 48, .value = 600.0}}));
  minihost::Instance instance(effect, parameters);

  const Image plate = ReadPpm(argv[1]);
  Image snow(plate.Width(), plate.Height(), Depth::kBits8);
  minihost::Frame frame;
  frame.time = std::stoi(argv[3]);
  frame.timing.timeScale = 24;  // frames a second
  frame.input = &plate;
  frame.output = &snow;
  if (const auto result = instance.Render(frame); result.err != PF_Err_NONE) {
    throw std::runtime_error("the effect returned " + std::to_string(result.err) + ": " + result.message);
  }
  WritePpm(snow, argv[2]);
} catch (const std::exception& error) {
  std::cerr << "embed: " << error.what() << '\n';
  return 1;
}
