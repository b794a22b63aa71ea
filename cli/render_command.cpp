#include "cli/render_command.h"

#include <fmt/format.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <numeric>
#include <utility>

#include "cli/atomic_file.h"
#include "cli/frame_range.h"
#include "cli/frame_rate.h"
#include "cli/output_name.h"
#include "cli/parameter_assignment.h"
#include "cli/parameter_names.h"
#include "cli/picture_reader.h"
#include "cli/picture_writer.h"
#include "cli/tool_error.h"
#include "minihost/instance.h"

namespace cli {
namespace {

using minihost::Depth;

constexpr double kMinShutter = 1;
constexpr double kMaxShutter = 720;

[[noreturn]] void RefuseUsage(const std::string& message) {
  throw ToolError(ExitCode::kUsage, message);
}

std::optional<Depth> ParseDepth(const std::string& text) {
  if (text.empty()) return {};
  if (text == "8") return Depth::kBits8;
  if (text == "16") return Depth::kBits16;
  if (text == "float") return Depth::kFloat;
  RefuseUsage(fmt::format("--depth: '{}' is not 8, 16 or float", text));
}

std::string NameOf(Depth depth) {
  return depth == Depth::kBits8 ? "8 bits" : depth == Depth::kBits16 ? "16 bits" : "float";
}

/// The command line, understood.
struct Plan {
  std::vector<std::int32_t> frames;
  OutputName output;
  FileFormat format;
  std::optional<Depth> depth;
  minihost::FrameTiming timing;
  minihost::ParameterSet parameters;
  bool onlySnow;  // whether the result lies on nothing, whichever option said so
};

minihost::FrameTiming TimingOf(const RenderOptions& options) {
  const double shutter = options.shutterDegrees;
  if (!(shutter >= kMinShutter && shutter <= kMaxShutter)) {
    RefuseUsage(
        fmt::format("--shutter: {} is not between {} and {} degrees (no shutter at all would count as "
                    "one open for the whole frame; the least blur is {})",
                    shutter, kMinShutter, kMaxShutter, kMinShutter));
  }
  const FrameRate rate = ParseFrameRate(options.fps);
  return {static_cast<std::uint32_t>(rate.timeScale), rate.timeStep, rate.timeStep, shutter};
}

/// --seed and --only-snow are short for two parameters; an explicit --set comes after them and wins.
minihost::ParameterSet ParametersOf(const RenderOptions& options, const minihost::Effect& effect) {
  std::vector<std::string> assignments;
  if (options.seed) assignments.push_back(fmt::format("{}={}", kRandomSeed, *options.seed));
  if (options.onlySnow) assignments.push_back(fmt::format("{}=off", kCompositeWithOriginal));
  assignments.insert(assignments.end(), options.assignments.begin(), options.assignments.end());
  return AssignParameters(effect.sharedParameters(), assignments);
}

bool IsOff(const minihost::ParameterSet& parameters, const char* name) {
  return std::get<double>(parameters.At(ParameterNames(parameters.list()).Find(name).index, 0)) == 0;
}

void CheckFrames(const Plan& plan) {
  if (plan.frames.size() > 1 && !plan.output.IsPattern()) {
    RefuseUsage(fmt::format("{} frames need a place for their number in the output name; try -o '{}'",
                            plan.frames.size(), plan.output.SuggestedPattern().string()));
  }
  for (const std::int32_t frame : plan.frames) {
    const std::int64_t most = INT32_MAX / plan.timing.timeStep - 1;
    if (std::abs(std::int64_t{frame}) > most) {
      RefuseUsage(
          fmt::format("--frames: {} is beyond frame {}, the last that can be counted at {}/{} frames "
                      "a second",
                      frame, most, plan.timing.timeScale, plan.timing.timeStep));
    }
  }
}

Plan MakePlan(const RenderOptions& options, const minihost::Effect& effect) {
  Plan plan{ParseFrames(options.frames),
            OutputName(options.output),
            FormatOf(options.output),
            ParseDepth(options.depth),
            TimingOf(options),
            ParametersOf(options, effect),
            false};
  plan.onlySnow = IsOff(plan.parameters, kCompositeWithOriginal);
  CheckFrames(plan);
  return plan;
}

void CheckOutput(const std::filesystem::path& photo, const std::filesystem::path& output) {
  CheckWritable(output);
  std::error_code error;
  if (std::filesystem::equivalent(photo, output, error)) {
    RefuseUsage(fmt::format("output '{}' is the photo itself; choose another name", output.string()));
  }
}

PF_RationalScale RationalOf(double aspect) {
  constexpr std::int32_t kDenominator = 1'000'000;
  const auto numerator = static_cast<std::int32_t>(std::lround(aspect * kDenominator));
  const std::int32_t divisor = std::gcd(numerator, kDenominator);
  return {numerator / divisor, static_cast<std::uint32_t>(kDenominator / divisor)};
}

void RenderFrame(minihost::Instance& instance, const minihost::Frame& frame, std::int32_t number) {
  const minihost::RenderResult result = instance.Render(frame);
  if (result.err == PF_Err_NONE) return;
  throw ToolError(ExitCode::kFrameFailed, fmt::format("frame {} failed with code {}{}{}", number, result.err,
                                                      result.message.empty() ? "" : ": ", result.message));
}

}  // namespace

std::string RunRender(const RenderOptions& options, std::shared_ptr<const minihost::Effect> effect) {
  const auto start = std::chrono::steady_clock::now();
  const Plan plan = MakePlan(options, *effect);
  CheckOutput(options.photo, plan.output.ForFrame(plan.frames.front()));
  const Picture photo = ReadPicture(options.photo, plan.depth);
  const minihost::Image& input = photo.image;
  minihost::Image output(input.width(), input.height(), input.depth());
  PictureTraits traits = photo.traits;
  traits.hasAlpha = traits.hasAlpha || plan.onlySnow;

  minihost::Instance instance(std::move(effect), plan.parameters);
  minihost::Frame frame;
  frame.timing = plan.timing;
  frame.pixelAspectRatio = RationalOf(photo.traits.pixelAspect);
  frame.input = &input;
  frame.output = &output;
  for (const std::int32_t number : plan.frames) {
    frame.time = number * plan.timing.timeStep;
    RenderFrame(instance, frame, number);
    WriteWhole(plan.output.ForFrame(number), EncodePicture(output, traits, plan.format));
  }
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
  const auto count = static_cast<double>(plan.frames.size());
  return fmt::format("{} frame{}, {} x {}, {}, {:.2f} s, {:.1f} frames/s", plan.frames.size(),
                     plan.frames.size() == 1 ? "" : "s", input.width(), input.height(), NameOf(input.depth()),
                     seconds.count(), count / seconds.count());
}

}  // namespace cli
