#include "web/engine/engine.h"

#include <utility>

#include "cli/report/error.h"
#include "cli/scene/frame_rate.h"
#include "cli/scene/frame_terms.h"
#include "cli/scene/parameter_names.h"
#include "cli/scene/parameter_text.h"
#include "cli/scene/reader.h"
#include "cli/scene/scene.h"
#include "cli/scene/writer.h"
#include "web/engine/pixels.h"
#include "web/engine/plain_entry.h"
#include "web/engine/words.h"

namespace web {
namespace {

// What a page sets has no file.
constexpr std::string_view kNameOfParameters = "parameters";

minihost::ParameterSet ReadParameters(std::string_view toml, const minihost::SharedParameterList& list) {
  cli::Scene scene(list);
  cli::ApplySceneText(toml, kNameOfParameters, scene);
  return scene.parameters;
}

bool CountsAlike(const minihost::FrameTiming& one, const minihost::FrameTiming& other) {
  return one.timeScale == other.timeScale && one.timeStep == other.timeStep;
}

}  // namespace

Engine::Engine(Loop loop)
    : effect_(minihost::Effect::Linked(loop == Loop::kPlain ? &PlainEntry : &MainEntry)),
      parameters_(effect_->SharedParameters()) {}

cli::Json Engine::Describe() const {
  return {{"version", VINTREL_VERSION}, {"parameters", DescribeParameters(effect_->Parameters())}};
}

void Engine::SetParameters(std::string_view toml) {
  parameters_ = ReadParameters(toml, effect_->SharedParameters());
  instance_.reset();
}

int Engine::AddPlate(int width, int height, minihost::Depth depth) {
  plates_.emplace(lastPlate_ + 1, Plate(width, height, depth));
  return ++lastPlate_;
}

Plate& Engine::PlateAt(int number) {
  const auto plate = plates_.find(number);
  if (plate == plates_.end()) {
    throw std::out_of_range("there is no plate " + std::to_string(number));
  }
  return plate->second;
}

void Engine::DropPlate(int number) {
  plates_.erase(number);
}

// The instance keeps the sums of the frame before, which hold for its parameters and its way of counting
// time.
minihost::Instance& Engine::InstanceFor(const minihost::FrameTiming& timing) {
  if (!instance_ || !CountsAlike(timing, timing_)) {
    instance_.emplace(effect_, parameters_);
  }
  timing_ = timing;
  return *instance_;
}

const minihost::Image& Engine::Render(const FrameRequest& request) {
  const cli::FrameRate rate = cli::About("fps", [&] { return cli::ParseFrameRate(request.fps); });
  cli::About("shutter", [&] { cli::CheckShutter(request.shutterDegrees); });
  cli::About("reduction", [&] { cli::CheckProxy(request.divisor); });
  cli::About("pixelAspect", [&] { cli::CheckPixelAspect(request.pixelAspect); });
  cli::CheckCountable(request.frame, rate);

  const minihost::Image& input = PlateAt(request.plate).For(request.divisor, request.depth);
  if (output_.Width() != input.Width() || output_.Height() != input.Height() ||
      output_.PixelDepth() != request.depth) {
    output_ = minihost::Image();  // first, so that two outputs never stand side by side
    output_ = minihost::Image(input.Width(), input.Height(), request.depth, minihost::Clearing::kNone);
  }
  minihost::Frame frame;
  frame.time = request.frame * rate.timeStep;
  frame.timing = cli::TimingOf(rate, request.shutterDegrees);
  frame.downsampleX = frame.downsampleY = {1, static_cast<std::uint32_t>(request.divisor)};
  frame.pixelAspectRatio = cli::PixelAspectOf(request.pixelAspect);
  frame.input = &input;
  frame.output = &output_;
  const minihost::RenderResult result = InstanceFor(frame.timing).Render(frame);
  if (result.err != PF_Err_NONE) {
    instance_.reset();
    cli::Refuse(cli::ExitCode::kFrameFailed, "frame {} failed with code {}{}{}", request.frame, result.err,
                result.message.empty() ? "" : ": ", result.message);
  }
  ToPageOrder(output_);
  return output_;
}

cli::Json Engine::Disabled(double frame) {
  minihost::Instance instance(effect_, parameters_);
  const minihost::CommandResult result = instance.UpdateParamsUi(minihost::UiEvent::kUpdate, frame);
  if (result.err != PF_Err_NONE) {
    cli::Refuse(cli::ExitCode::kFrameFailed, "the effect could not update its parameters: code {}",
                result.err);
  }
  const cli::ParameterNames names(effect_->Parameters());
  cli::Json slugs = cli::Json::array();
  for (const minihost::ParameterInfo& parameter : effect_->Parameters()) {
    if (parameter.HasValue() && instance.IsDisabled(parameter.index)) {
      slugs.push_back(names.SlugOf(parameter));
    }
  }
  return slugs;
}

cli::Json Engine::Parse(std::string_view slug, std::string_view text) const {
  const cli::ParameterNames names(effect_->Parameters());
  return JsonOf(cli::ParseValue(names.Find(slug), text));
}

cli::Json Engine::ReadScene(std::string_view text, std::string_view name) const {
  return ReadSceneText(text, name, effect_->SharedParameters());
}

std::string Engine::WriteScene(std::string_view toml) const {
  cli::Scene scene(effect_->SharedParameters());
  cli::ApplySceneText(toml, "the scene", scene);
  return cli::WriteScene(scene);
}

}  // namespace web
