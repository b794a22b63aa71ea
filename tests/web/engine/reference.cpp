// The frames that the page's engine has to make, by the host library alone.
//
//   web_reference CASES OUT    CASES holds an array of objects; OUT gets their frames, straight RGBA, one
//   after the other
#include <algorithm>
#include <cstring>
#include <exception>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/frames/sample_convert.h"
#include "cli/scene/frame_rate.h"
#include "cli/scene/frame_terms.h"
#include "cli/scene/reader.h"
#include "minihost/instance.h"
#include "minihost/picture/copy.h"
#include "web/engine/plain_entry.h"

namespace {

using Json = nlohmann::json;
using minihost::Depth;
using minihost::Image;

Depth DepthOf(int bits) {
  return bits == 32 ? Depth::kFloat : bits == 16 ? Depth::kBits16 : Depth::kBits8;
}

// The plate that plateOf of the test makes in 8 bits, a linear congruence's high bytes, brought to the depth.
Image PlateOf(const Json& test, Depth depth) {
  Image plate(test["width"], test["height"], depth);
  std::uint32_t state = test["seed"];
  const bool isBlank = test["blank"];
  minihost::WithPixel(depth, [&](auto pixel) {
    using Pixel = decltype(pixel);
    const auto next = [&] {
      state = state * 1664525u + 1013904223u;
      return cli::ConvertSample<cli::WayOf<Pixel>, cli::To255>(
          isBlank ? std::uint8_t{0} : static_cast<std::uint8_t>(state >> 24));
    };
    for (int row = 0; row < plate.Height(); ++row) {
      for (Pixel& one : plate.Row<Pixel>(row)) {
        one.red = next();
        one.green = next();
        one.blue = next();
        one.alpha = next();
      }
    }
  });
  return plate;
}

void Write(const Image& image, std::ofstream& out) {
  minihost::WithPixel(image.PixelDepth(), [&](auto pixel) {
    using Pixel = decltype(pixel);
    for (int row = 0; row < image.Height(); ++row) {
      for (const Pixel& one : image.Row<Pixel>(row)) {
        const decltype(one.red) samples[] = {one.red, one.green, one.blue, one.alpha};
        out.write(reinterpret_cast<const char*>(samples), sizeof samples);
      }
    }
  });
}

void Render(const Json& test, const std::shared_ptr<const minihost::Effect>& effect, std::ofstream& out) {
  cli::Scene scene(effect->SharedParameters());
  cli::ApplySceneText(test["scene"].get<std::string>(), "case", scene);
  const int divisor = test["reduction"];
  Image input = PlateOf(test, DepthOf(test["depth"]));
  if (divisor > 1) {
    input =
        minihost::Resized(input, std::max(1, input.Width() / divisor), std::max(1, input.Height() / divisor));
  }
  Image output(input.Width(), input.Height(), input.PixelDepth());
  const cli::FrameRate rate = cli::ParseFrameRate(test["fps"].get<std::string>());
  minihost::Frame frame;
  frame.time = test["frame"].get<int>() * rate.timeStep;
  frame.timing = cli::TimingOf(rate, test["shutter"]);
  frame.downsampleX = frame.downsampleY = {1, static_cast<std::uint32_t>(divisor)};
  frame.pixelAspectRatio = cli::PixelAspectOf(test["pixelAspect"]);
  frame.input = &input;
  frame.output = &output;
  const minihost::RenderResult result = minihost::Instance(effect, scene.parameters).Render(frame);
  if (result.err != PF_Err_NONE) {
    throw std::runtime_error("code " + std::to_string(result.err));
  }
  Write(output, out);
}

}  // namespace

int main(int count, char** arguments) {
  try {
    if (count != 3) {
      throw std::runtime_error("usage: web_reference CASES OUT");
    }
    const auto effect = minihost::Effect::Linked(&MainEntry);
    const auto plain = minihost::Effect::Linked(&web::PlainEntry);
    std::ifstream in(arguments[1]);
    std::ofstream out(arguments[2], std::ios::binary);
    for (const Json& test : Json::parse(in)) {
      Render(test, test["isPlain"] ? plain : effect, out);
    }
    out.close();
    return out ? 0 : 1;
  } catch (const std::exception& error) {
    std::cerr << "web_reference: " << error.what() << '\n';
    return 1;
  }
}
