// Frames by the tool, and what the page's engine needs to make them.
//
//   tool TOOL FOLDER [...]     what follows is sameness::Run's
//   tool --cases FILE          the frames as JSON, for engine.mjs
//
// All but those of the other protocol, of a pixel aspect in more than six decimals, and of a reduction, which
// is theirs to make: it forgets the color of clear pixels.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "cli/picture/reader.h"
#include "cli/picture/writer.h"
#include "cli/scene/writer.h"
#include "hostapi/commands.h"
#include "minihost/effect.h"
#include "tests/sameness/looks.h"

namespace {

namespace fs = std::filesystem;
using minihost::Depth;
using minihost::Image;
using sameness::Look;

bool IsCommon(const Look& look) {
  return look.protocol == minihost::Protocol::kSmart && look.aspect.den == 1 && look.reduction == 1;
}

cli::Scene SceneOf(const Look& look) {
  static const auto effect = minihost::Effect::Linked(&MainEntry);
  cli::Scene scene(effect->SharedParameters());
  scene.parameters = sameness::ParametersOf(look, effect->SharedParameters());
  scene.frames = std::to_string(look.time);
  scene.fps = std::to_string(sameness::kRate);
  scene.shutterDegrees = look.shutter;
  return scene;
}

std::optional<Image> ByTool(const fs::path& tool, const fs::path& folder, const Look& look, Depth depth) {
  if (!IsCommon(look)) {
    return {};
  }
  const auto write = [&](const char* name, const auto& bytes) {
    std::ofstream(folder / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  };
  cli::PictureTraits traits;
  traits.hasAlpha = true;
  write("plate.tif", cli::EncodePicture(sameness::PlateOf(look, depth), traits, cli::FileFormat::kTiff));
  cli::Scene scene = SceneOf(look);
  scene.input = folder / "plate.tif";
  scene.output = folder / "frame.tif";
  write("scene.toml", cli::WriteScene(scene));
  const std::string command = tool.string() + " render --quiet --scene " + (folder / "scene.toml").string();
  if (std::system(command.c_str()) != 0) {
    throw std::runtime_error(std::string(look.name) + " was not rendered");
  }
  return cli::ReadPicture(scene.output).image;
}

void WriteCases(const char* file) {
  auto cases = nlohmann::json::array();
  for (const Look& look : sameness::Looks()) {
    for (const int bits : {8, 16, 32}) {
      const Depth depth = bits == 8 ? Depth::kBits8 : bits == 16 ? Depth::kBits16 : Depth::kFloat;
      if (!IsCommon(look)) {
        continue;
      }
      const Image plate = sameness::PlateOf(look, depth);
      auto samples = nlohmann::json::array();
      minihost::WithPixel(depth, [&]<class Pixel>(Pixel) {
        for (int row = 0; row < plate.Height(); ++row) {
          for (const Pixel& pixel : plate.Row<Pixel>(row)) {
            samples.insert(samples.end(), {pixel.red, pixel.green, pixel.blue, pixel.alpha});
          }
        }
      });
      cases.push_back({{"name", look.name},
                       {"depth", bits},
                       {"width", plate.Width()},
                       {"height", plate.Height()},
                       {"samples", samples},
                       {"frame", look.time},
                       {"scene", cli::WriteScene(SceneOf(look))}});
    }
  }
  std::ofstream(file) << cases;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3) {
    return 2;
  }
  if (arguments[1] == std::string_view("--cases")) {
    WriteCases(arguments[2]);
    return 0;
  }
  fs::create_directories(arguments[2]);
  return sameness::Run(
      [&](const Look& look, Depth depth) { return ByTool(arguments[1], arguments[2], look, depth); },
      count - 3, arguments + 3);
}
