// The small languages of the command line, the first byte saying which: frame ranges, shares, names of files,
// rates, keys and values.
#include <numeric>
#include <set>
#include <string>

#include "cli/file/output_name.h"
#include "cli/report/error.h"
#include "cli/scene/frame_range.h"
#include "cli/scene/frame_rate.h"
#include "cli/scene/key_text.h"
#include "cli/scene/parameter_assignment.h"
#include "fuzz/input.h"
#include "minihost/effect.h"

namespace {

using fuzz::Require;

void TryFrames(std::string_view text) {
  const std::vector<std::int32_t> frames = cli::ParseFrames(text);
  Require(!frames.empty() && frames.size() <= cli::kMaxFrames, "frames within the limit");
  Require(std::set<std::int32_t>(frames.begin(), frames.end()).size() == frames.size(), "each frame once");
  Require(cli::SpreadFrames(frames, 7).size() == std::min<std::size_t>(7, frames.size()), "as many as asked");
}

void TryPart(std::string_view text) {
  const cli::Part part = cli::ParsePart(text);
  Require(part.number >= 1 && part.number <= part.count && part.count <= cli::kMaxFrames, "a share there is");
  std::vector<std::int32_t> frames(1000);
  std::iota(frames.begin(), frames.end(), -500);
  const std::size_t size = cli::TakePart(frames, part).size();
  Require(size == frames.size() / part.count || size == frames.size() / part.count + 1, "even shares");
}

void TryName(std::string_view text) {
  const cli::OutputName name{std::filesystem::path(text)};
  for (const std::int32_t frame : {0, 7, -7, 12345, INT32_MAX, INT32_MIN}) {
    const std::string file = name.ForFrame(frame).filename().string();
    Require(name.Makes(file), "a name makes its own files");
    Require(!name.IsPattern() || name.FrameOf(file) == frame, "a file's number is its frame's");
  }
  name.SuggestedPattern();
}

void TryRate(std::string_view text) {
  const cli::FrameRate rate = cli::ParseFrameRate(text);
  Require(rate.timeScale > 0 && rate.timeStep > 0 && std::gcd(rate.timeScale, rate.timeStep) == 1,
          "a rate is positive and reduced");
}

void TryParameter(std::string_view text, bool isKeys) {
  static const auto effect = minihost::Effect::Linked(&MainEntry);
  minihost::ParameterSet parameters(effect->SharedParameters());
  using Kind = cli::ParameterChange::Kind;
  cli::Apply(parameters, {isKeys ? Kind::kKeys : Kind::kValue, std::string(text)});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  fuzz::Input input(bytes, size);
  const char which = input.Take<char>();
  const std::string_view text = input.Rest();
  try {
    switch (which) {
      case 'f':
        TryFrames(text);
        break;
      case 'p':
        TryPart(text);
        break;
      case 'n':
        TryName(text);
        break;
      case 'r':
        TryRate(text);
        break;
      case 'k':
      case 's':
        TryParameter(text, which == 'k');
        break;
      default:
        return -1;  // not worth keeping
    }
  } catch (const cli::ToolError&) {
  }
  return 0;
}
