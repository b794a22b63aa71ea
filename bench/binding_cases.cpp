// What the bindings add to the effect, and what a keyed shot costs far from its start.
#include <fmt/format.h>

#include <cmath>
#include <vector>

#include "bench/cases.h"
#include "bench/in_turn.h"
#include "bindings/frei0r/snow.h"
#include "tests/bindings/openfx/host.h"

namespace {

constexpr double kMilli = 1e3;

struct Size {
  explicit Size(Effort effort) : width(effort.Scaled({}).width), height(effort.Scaled({}).height) {}
  int width, height;
};

/// The default look by frei0r, and by the effect alone from and into pictures of its own.
void RunFrei0r(Effort effort, Report& report) {
  const Size size(effort);
  const auto pixels = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
  std::vector<std::uint8_t> in(pixels * 4, 60);
  std::vector<std::uint8_t> out(in.size());
  frei0r::Snow snow(static_cast<unsigned>(size.width), static_cast<unsigned>(size.height));
  minihost::Instance instance(frei0r::TheEffect().effect);
  minihost::Image input(size.width, size.height, minihost::Depth::kBits8);
  minihost::Image output(size.width, size.height, minihost::Depth::kBits8);
  for (int row = 0; row < input.Height(); ++row) {
    for (PF_Pixel& pixel : input.Row<PF_Pixel>(row)) {
      pixel = {60, 60, 60, 60};
    }
  }
  minihost::Frame frame;
  frame.timing = {25, 1, 1};
  frame.input = &input;
  frame.output = &output;
  frame.time = 50;
  const std::vector<Samples> times =
      TimeInTurn({[&] { return SecondsOf([&] { instance.Render(frame); }); },
                  [&] { return SecondsOf([&] { snow.Render(2.0, in.data(), out.data()); }); }},
                 effort.Rounds(15), effort.WarmUps());
  const std::uint8_t* rendered = out.data();
  for (int row = 0; row < output.Height(); ++row) {
    for (const PF_Pixel& pixel : output.Row<PF_Pixel>(row)) {
      if (pixel.red != rendered[0] || pixel.alpha != rendered[3]) {
        throw Difference(fmt::format("frei0r's frame differs in row {}", row));
      }
      rendered += 4;
    }
  }
  report.Add({.name = "frei0r's filter (the effect alone)",
              .depth = "8",
              .reference = Median(times[0]) * kMilli,
              .measured = Median(times[1]) * kMilli,
              .ratio = MedianRatio(times[0], times[1])});
}

/// Frames of a shot whose Speed has keys, after the first at 10,000, beside a default frame at the start.
void RunLongShot(Effort effort, Report& report) {
  static const ofxhost::Plugin plugin(VINTREL_OPENFX_MODULE);
  const Size size(effort);
  const auto keyed = plugin.Create("OfxImageEffectContextFilter");
  const auto plain = plugin.Create("OfxImageEffectContextFilter");
  keyed->params.at("speed")->curves[0] = [](double time) { return 200 + time / 100; };
  keyed->params.at("speed")->keys = {0, 20'000};
  const auto picture = ofxhost::MakePicture({size.width, size.height});
  const auto output = ofxhost::MakePicture({size.width, size.height});
  const auto render = [&](ofxhost::Effect& effect, double time) {
    return SecondsOf([&] {
      if (plugin.Render(effect, time, picture.get(), *output) != 0) {
        throw Difference("the frame failed");
      }
    });
  };
  const double first = render(*keyed, 10'000);
  const std::vector<Samples> times =
      TimeInTurn({[&] { return render(*plain, 2); }, [&] { return render(*keyed, 9'999); },
                  [&] { return render(*keyed, 10'001); }},
                 effort.Rounds(9), effort.WarmUps());
  const auto add = [&](const char* name, double seconds) {
    report.Add({.name = name,
                .depth = "8",
                .reference = Median(times[0]) * kMilli,
                .measured = seconds * kMilli,
                .ratio = Median(times[0]) / seconds});
  };
  add("OpenFX, keyed, frame 10,000 first (frame 2)", first);
  add("OpenFX, keyed, then 9,999 (frame 2)", Median(times[1]));
  add("OpenFX, keyed, then 10,001 (frame 2)", Median(times[2]));
}

}  // namespace

CaseSection BindingCases(Effort effort) {
  return {{"The effect in its bindings", "milliseconds", "without", "with"},
          {{"bindings/frei0r/8", [=](Report& report) { RunFrei0r(effort, report); }},
           {"bindings/openfx-long-shot/8", [=](Report& report) { RunLongShot(effort, report); }}}};
}
