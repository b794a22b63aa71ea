#include "cli/command/explain.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/report/nearest_name.h"

namespace cli {
namespace {

/// What to write in place of an option that other tools have and this one has by another name, or has not.
std::string WordsForOthers(std::string_view option) {
  constexpr std::pair<std::string_view, std::string_view> kWords[] = {
      {"-ss", "for a part of a video write --frames 24-71, in frames"},
      {"-t", "for a part of a video write --frames 0-47, in frames"},
      {"-to", "for a part of a video write --frames 0-47, in frames"},
      {"-frames:v", "write --frames 0-47"},
      {"-vframes", "write --frames 0-47"},
      {"-start_number", "the numbers of the files count; write --frames 1-48"},
      {"-framerate", "write --fps 24"},
      {"-c:v", "write --codec h264, hevc, prores or ffv1"},
      {"-vcodec", "write --codec h264, hevc, prores or ffv1"},
      {"-c:a", "write --sound copy, aac or none"},
      {"-acodec", "write --sound copy, aac or none"},
      {"-an", "write --sound none"},
      {"-crf", "write --quality 20"},
      {"-q:v", "write --quality 20"},
      {"-qscale:v", "write --quality 20"},
      {"-pix_fmt", "write --depth 8, 16 or float; the codec decides the rest"},
      {"-s", "for a smaller picture write --proxy 2; for an empty one --blank 1920x1080"},
      {"-vf", "snow is all that is drawn; crop or scale before or after"},
      {"-n", "write --no-overwrite"},
      {"-hide_banner", "there is none; --quiet leaves progress and notes out"},
      {"-loglevel", "write --quiet"},
      {"-v", "there is no more to tell; --progress json tells programs everything"},
      {"-d", "write --depth 8, 16, half or float"},
      {"--threads", "write --jobs 4"},
      {"-threads", "write --jobs 4"},
      {"--compress", "write --compression zip"},
      {"--frame", "write --frames 7"},
      {"--parallel-frames", "frames are done in parallel; --jobs 4 says how many"},
  };
  const auto* const found =
      std::ranges::find(kWords, option, &std::pair<std::string_view, std::string_view>::first);
  return found == std::end(kWords) ? "" : std::string(found->second);
}

}  // namespace

std::string Explain(const CLI::App& app, const CLI::ParseError& error) {
  std::vector<std::string> unknown = app.remaining(true);
  std::erase(unknown, "--");
  const auto used = app.get_subcommands();
  const std::string help =
      fmt::format("see: vintrel {}--help", used.empty() ? "" : used[0]->get_name() + ' ');
  if (unknown.empty() && used.empty()) {
    return "no command; begin with: vintrel render photo.png -o snow.png, or see: vintrel --help";
  }
  if (unknown.empty()) {
    // "--fps: 1 required RATE missing", of options that all take one value.
    const std::string_view what = error.what();
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr && what.ends_with(" missing")) {
      return fmt::format("{} needs a value; {}", what.substr(0, what.find(':')), help);
    }
    return fmt::format("{}; {}", what, help);
  }
  std::vector<std::string> names;
  if (used.empty()) {
    for (const CLI::App* command : app.get_subcommands({})) {
      names.push_back(command->get_name());
    }
  } else if (unknown[0].starts_with('-')) {
    for (const CLI::Option* option : used[0]->get_options()) {
      names.push_back(option->get_name());
    }
  }
  if (const std::string here = WordsForOthers(unknown[0]); !here.empty()) {
    return fmt::format("unknown option '{}'; {}", unknown[0], here);
  }
  const std::string suggestion =
      SuggestNearest(unknown[0], std::vector<std::string_view>(names.begin(), names.end()));
  if (used.empty()) {
    return fmt::format("unknown command '{}'{}; {}", unknown[0], suggestion, help);
  }
  return fmt::format("{} '{}'{}; {}", unknown[0].starts_with('-') ? "unknown option" : "unexpected argument",
                     unknown[0], suggestion, help);
}

}  // namespace cli
