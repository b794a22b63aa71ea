// Frames by the host library: equal lines are equal frames, whoever compiled this.
//
//   frames PATH LOOP [...]    best, kBaseline, kAvx2 or kAvx512, the one this was linked for: 77 where the
//   machine has not got it; fast or plain.  What follows is sameness::Run's.
#include <stdexcept>
#include <string>

#include "minihost/instance.h"
#include "tests/sameness/looks.h"
#include "web/engine/plain_entry.h"

namespace {

using minihost::Depth;
using minihost::Image;
using sameness::Look;

Image Render(const Look& look, Depth depth, const std::shared_ptr<const minihost::Effect>& effect) {
  const Image input = sameness::PlateOf(look, depth);
  Image output(input.Width(), input.Height(), depth);
  minihost::Frame frame;
  frame.time = look.time;
  frame.timing.timeScale = sameness::kRate;
  frame.timing.shutterDegrees = look.shutter;
  frame.protocol = look.protocol;
  frame.downsampleX = frame.downsampleY = {1, static_cast<std::uint32_t>(look.reduction)};
  frame.pixelAspectRatio = look.aspect;
  frame.input = &input;
  frame.output = &output;
  minihost::Instance instance(effect, sameness::ParametersOf(look, effect->SharedParameters()));
  const minihost::RenderResult result = instance.Render(frame);
  if (result.err != PF_Err_NONE) {
    throw std::runtime_error(std::string(look.name) + ": code " + std::to_string(result.err));
  }
  return output;
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
  if (count < 3) {
    return 2;
  }
  if (!HasPath(arguments[1])) {
    return 77;
  }
  const bool isPlain = arguments[2] == std::string_view("plain");
  const auto effect = minihost::Effect::Linked(isPlain ? &web::PlainEntry : &MainEntry);
  return sameness::Run([&](const Look& look, Depth depth) { return Render(look, depth, effect); }, count - 3,
                       arguments + 3);
}
