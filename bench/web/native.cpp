// This machine's own form of the frames that bench/web/bench.mjs times: the host library without the tool.
//
//   web_native PLATE WIDTH HEIGHT    PLATE holds straight RGBA of 8 bits
//
// Each line of standard input is a request, { scene, frame, reduction }; each line of output what it took and
// a hash of its pixels, { milliseconds, hash }.
#include <chrono>
#include <ctime>
#include <exception>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "cli/scene/frame_rate.h"
#include "cli/scene/frame_terms.h"
#include "cli/scene/reader.h"
#include "cli/scene/scene.h"
#include "minihost/instance.h"
#include "minihost/picture/copy.h"

namespace {

using Json = nlohmann::json;
using minihost::Depth;
using minihost::Image;

Image ReadPlate(const char* file, int width, int height) {
  Image plate(width, height, Depth::kBits8);
  std::ifstream in(file, std::ios::binary);
  for (int row = 0; row < height; ++row) {
    for (PF_Pixel& one : plate.Row<PF_Pixel>(row)) {
      char rgba[4] = {};
      in.read(rgba, sizeof rgba);
      one.red = static_cast<std::uint8_t>(rgba[0]);
      one.green = static_cast<std::uint8_t>(rgba[1]);
      one.blue = static_cast<std::uint8_t>(rgba[2]);
      one.alpha = static_cast<std::uint8_t>(rgba[3]);
    }
  }
  if (!in) {
    throw std::runtime_error(std::string("cannot read the plate ") + file);
  }
  return plate;
}

// FNV-1a of the pixels as RGBA; hashOf in forms.mjs is the same.
std::uint32_t HashOf(const Image& image) {
  std::uint32_t hash = 2166136261u;
  for (int row = 0; row < image.Height(); ++row) {
    for (const PF_Pixel& one : image.Row<PF_Pixel>(row)) {
      for (const std::uint8_t sample : {one.red, one.green, one.blue, one.alpha}) {
        hash = (hash ^ sample) * 16777619u;
      }
    }
  }
  return hash;
}

// As the page's engine: the instance lasts while the scene does, the output while its size does.
class Renderer {
 public:
  explicit Renderer(Image plate) { plates_.emplace(1, std::move(plate)); }

  Json Render(const Json& request) {
    const int divisor = request["reduction"];
    const Image& input = PlateFor(divisor);
    const std::clock_t began = std::clock();
    const auto start = std::chrono::steady_clock::now();
    SetScene(request["scene"]);
    if (output_.Width() != input.Width() || output_.Height() != input.Height()) {
      output_ = Image(input.Width(), input.Height(), Depth::kBits8, minihost::Clearing::kNone);
    }
    const cli::FrameRate rate = cli::ParseFrameRate("24");
    minihost::Frame frame;
    frame.time = request["frame"].get<int>() * rate.timeStep;
    frame.timing = cli::TimingOf(rate, 180);
    frame.downsampleX = frame.downsampleY = {1, static_cast<std::uint32_t>(divisor)};
    frame.input = &input;
    frame.output = &output_;
    const minihost::RenderResult result = instance_->Render(frame);
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
    const double worked = static_cast<double>(std::clock() - began) * 1000 / CLOCKS_PER_SEC;
    if (result.err != PF_Err_NONE) {
      throw std::runtime_error("code " + std::to_string(result.err));
    }
    return {{"milliseconds", took.count()}, {"worked", worked}, {"hash", HashOf(output_)}};
  }

 private:
  const Image& PlateFor(int divisor) {
    const Image& whole = plates_.at(1);
    const auto known = plates_.find(divisor);
    return known != plates_.end() ? known->second
                                  : plates_
                                        .emplace(divisor, minihost::Resized(whole, whole.Width() / divisor,
                                                                            whole.Height() / divisor))
                                        .first->second;
  }

  void SetScene(const std::string& text) {
    if (!instance_ || text != sceneText_) {
      cli::Scene scene(effect_->SharedParameters());
      cli::ApplySceneText(text, "request", scene);
      instance_.emplace(effect_, scene.parameters);
      sceneText_ = text;
    }
  }

  std::shared_ptr<const minihost::Effect> effect_ = minihost::Effect::Linked(&MainEntry);
  std::optional<minihost::Instance> instance_;
  std::string sceneText_;
  std::map<int, Image> plates_;
  Image output_;
};

}  // namespace

int main(int count, char** arguments) {
  try {
    if (count != 4) {
      throw std::runtime_error("usage: web_native PLATE WIDTH HEIGHT");
    }
    Renderer renderer(ReadPlate(arguments[1], std::stoi(arguments[2]), std::stoi(arguments[3])));
    for (std::string line; std::getline(std::cin, line);) {
      std::cout << renderer.Render(Json::parse(line)).dump() << std::endl;
    }
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "web_native: " << error.what() << '\n';
    return 1;
  }
}
