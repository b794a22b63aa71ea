#include "cli/command/options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "cli/report/number.h"

namespace cli {
namespace {

// Checks of single arguments.  What they return goes before the user after the option's name.
std::string CheckNotEmpty(const std::string& text) {
  return text.empty() ? "is empty; give it a value, or leave it out" : "";
}

template <class Number>
std::string CheckNumber(const std::string& text) {
  Number number{};
  std::string_view rest = text;
  const std::errc error = TakeNumber(rest, number);
  if (error == std::errc::result_out_of_range) {
    return fmt::format("'{}' is too large", text);
  }
  if (error == std::errc() && rest.empty()) {
    return {};
  }
  return fmt::format("'{}' is not a {}number", text, std::is_integral_v<Number> ? "whole " : "");
}

// The options that change parameters.  Each is noted as soon as it is parsed, so that the later one wins
// whichever they are.
void AddChanges(CLI::App& command, std::vector<ParameterChange>& changes) {
  using Kind = ParameterChange::Kind;
  const auto add = [&](const char* name, Kind kind, const std::string& before, const char* help) {
    const auto note = [&changes, kind, before](const std::string& text) {
      changes.push_back({kind, before + text});
    };
    return command.add_option_function<std::string>(name, note, help)->trigger_on_parse();
  };
  add("--set", Kind::kValue, "", "Set a parameter; may be repeated (see: vintrel params)")
      ->type_name("NAME=VALUE");
  add("--key", Kind::kKeys, "", "Keys of a parameter: Speed@0=100:smooth,48=400")
      ->type_name("NAME@FRAME=VALUE");
  add("--seed", Kind::kValue, fmt::format("{}=", kRandomSeed),
      "Another arrangement of flakes: short for --set random-seed=N")
      ->type_name("N");
  const auto hideBackground = [&changes] {
    changes.push_back({Kind::kValue, fmt::format("{}=off", kCompositeWithOriginal)});
  };
  command.add_flag_callback("--only-snow", hideBackground, "Snow alone, on a transparent background")
      ->trigger_on_parse();
}

// What a shot is made of: for render and sheet alike.
void AddShot(CLI::App& command, ShotOptions& options, const char* outputs) {
  command.add_option("INPUT", options.files[0],
                     "Picture, numbered pictures (plate.####.exr, @ one digit) or video to snow on");
  command.add_option("OUTPUT", options.files[1], "What to write, when -o does not say it");
  command.add_option("-i,--input", options.input, "The input, as an option")->type_name("FILE");
  command.add_option("--blank", options.blank, "A transparent input of this size")->type_name("WxH");
  command.add_option("-o,--output", options.output, outputs)->type_name("FILE");
  command.add_option("--scene", options.sceneFile, "Take all of it from a scene file")->type_name("FILE");
  command
      .add_option("--preset", options.preset, "Begin with a look, or a file of yours (see: vintrel presets)")
      ->type_name("NAME");
  AddChanges(command, options.changes);
  command.add_option("--frames", options.frames, "7, 0-47, 1-100x5, 1,5,9-20 (default: the input's, or 0)")
      ->type_name("LIST");
  command
      .add_option("-r,--fps", options.fps,
                  "Frames a second: 24, 23.976, 30000/1001 (default: the input's, or 24)")
      ->type_name("RATE");
  command.add_flag("--retime", options.retime, "Of video: at --fps, the picture shown at each moment");
  command.add_option("--shutter", options.shutterDegrees, "Motion blur, 1 to 720 degrees (default 180)")
      ->type_name("DEGREES")
      ->check(CheckNumber<double>);
  command.add_option("--depth", options.depth, "8, 16, half (EXR) or float (default: the input's)")
      ->type_name("DEPTH");
  command.add_option("--alpha", options.alpha, "Alpha of video: straight (default) or premultiplied")
      ->type_name("KIND");
  command
      .add_option("--compression", options.compression,
                  "Of pictures: none is the fastest; zip, zip:9, piz, ...")
      ->type_name("NAME");
  command
      .add_option("--quality", options.quality,
                  "Of JPEG 1 to 100 (95), or the video encoder's constant quality")
      ->type_name("N");
  command.add_option("--proxy", options.proxy, "Render at 1/N of the size: 2 or 4")->type_name("N");
  command.add_option("--pixel-aspect", options.pixelAspect, "A pixel's width over its height")
      ->type_name("RATIO")
      ->check(CheckNumber<double>);
  command.add_option("--jobs", options.jobs, "Frames at the same time (default: one for each processor)")
      ->type_name("N");
  command.add_option("--missing", options.missing, "For gaps in a sequence: error (default), skip or black")
      ->type_name("WHAT");
  for (const char* whole : {"--proxy", "--jobs", "--quality"}) {
    command.get_option(whole)->check(CheckNumber<int>);
  }
  command.add_flag("--keep-going", options.keepGoing, "Go on after a frame that fails");
  CLI::Option* const keep =
      command.add_flag("--no-overwrite", options.noOverwrite, "Refuse to replace files");
  command.add_flag("-y,--overwrite", options.overwrite, "Replace files (the default)")->excludes(keep);
  command.add_option("--progress", options.progress, "text (default) or json")->type_name("HOW");
  command.add_flag("-q,--quiet", options.quiet, "No progress, no closing line");
}

void AddRender(CLI::App& app, ShotOptions& options) {
  CLI::App* render = app.add_subcommand("render", "Draw snow on a picture, a sequence or a video");
  AddShot(*render, options, ".png .jpg .tif .exr (#### is the frame's number) .mp4 .mov .mkv");
  render->add_option("--codec", options.codec, "Of video: h264, hevc, prores, ffv1")->type_name("NAME");
  render->add_option("--sound", options.sound, "Of video: auto (default), copy, aac or none")
      ->type_name("HOW");
  render->add_option("--part", options.part, "One share of the frames, for several machines: 3/10")
      ->type_name("K/N");
  render->add_flag("--resume", options.resume, "Leave out frames that are whole and of the same scene");
  render->add_option("--save-scene", options.saveScene, "Write down what was asked for, complete")
      ->type_name("FILE");
  render->add_flag("--dry-run", options.dryRun, "Print the scene and the plan, and render nothing");
  render->footer(
      "Examples:\n"
      "  vintrel render street.png -o snow.png --set Flakes=20000 --set Size=4\n"
      "  vintrel render street.jpg -o frames/snow.####.png --frames 0-47 --fps 25\n"
      "  vintrel render shot.mov -o snow.mp4 --preset heavy-snow --key \"Wind@0=0:smooth,48=60\"\n"
      "  vintrel render --blank 640x360 -o snow.mov --frames 0-47 --only-snow --set Transfer-Mode=Composite\n"
      "  vintrel render --scene shot.toml --part 3/10 --resume");
}

void AddSheet(CLI::App& app, CommandLine& line) {
  CLI::App* sheet = app.add_subcommand("sheet", "Render a few frames of a shot into one picture");
  AddShot(*sheet, line.shot, "The sheet: .png .jpg .tif .exr");
  sheet->add_option("--count", line.sheetCells, "Pictures on the sheet, 1 to 400 (default 12)")
      ->type_name("N")
      ->check(CheckNumber<int>);
  sheet->footer("Example:\n  vintrel sheet shot.mov -o sheet.png --preset blizzard --frames 0-119");
}

void AddPanel(CLI::App& app, PanelOptions& options) {
  CLI::App* panel =
      app.add_subcommand("panel", "Set the snow in a page of the browser, on a picture or clip");
  panel->add_option("INPUT", options.input, "Picture, numbered pictures or video to snow on");
  panel->add_option("--scene", options.sceneFile, "Begin with a scene file")->type_name("FILE");
  panel->add_flag("--no-browser", options.noBrowser, "Say the address, and open nothing");
  panel->add_option("--port", options.port, "Port of 127.0.0.1 (default: any free one)")
      ->type_name("N")
      ->check(CheckNumber<int>);
  panel->footer("Examples:\n  vintrel panel shot.mov\n  vintrel panel --scene shot.toml --no-browser");
}

void AddCheck(CLI::App& app, CheckOptions& options) {
  CLI::App* check = app.add_subcommand("check", "Try an effect module in a host that lies and interrupts");
  check->add_option("MODULE", options.module, "The module (default: the effect that is in the tool)");
  check->add_option("--levels", options.levels, "Which of the levels 1 to 10: 1,3-5 (default: all)")
      ->type_name("LIST");
  check->add_option("--seed", options.seed, "Of all that is random (default 1)")->type_name("N");
  check->add_flag("--quick", options.isQuick, "A twentieth of the random tries");
  check->add_option("--against", options.against, "A build whose pictures are to be equal; may be repeated")
      ->type_name("MODULE");
  check->add_option("--jobs", options.jobs, "Levels at the same time (default: one for each processor)")
      ->type_name("N")
      ->check(CheckNumber<int>);
  check->add_flag("--json", options.asJson, "The report as one JSON object");
  check->footer("Example:\n  vintrel check Vintrel.so --levels 1,8 --seed 7");
}

}  // namespace

std::shared_ptr<CLI::App> MakeParser(CommandLine& line) {
  auto app = std::make_shared<CLI::App>("Falling snow with depth, light and motion blur", "vintrel");
  app->set_version_flag("--version", "vintrel " VINTREL_VERSION);
  app->require_subcommand(1);
  AddRender(*app, line.shot);
  AddSheet(*app, line);
  AddPanel(*app, line.panel);
  CLI::App* info = app->add_subcommand("info", "Say what the tool sees in a file");
  info->footer("Example:\n  vintrel info shot.mov");
  info->add_option("FILE", line.infoFile, "Picture, numbered pictures or video")->required();
  info->add_flag("--json", line.infoAsJson, "As one JSON object");
  app->add_subcommand("presets", "List the looks that --preset takes")
      ->footer("Example:\n  vintrel render street.png -o snow.png --preset flurry");
  app->add_subcommand("params", "List the parameters that --set takes")
      ->footer("Example:\n  vintrel params | grep -i wiggle");
  AddCheck(*app, line.check);
  app->add_subcommand("about", "Say what the effect says about itself")->footer("Example:\n  vintrel about");
  app->footer(
      "'vintrel COMMAND --help' says more.\n"
      "Exit codes: 0 done, 1 a frame or a check failed, 2 command line, 3 input, 4 output, 130 interrupted.");
  for (CLI::App* command : app->get_subcommands({})) {
    for (CLI::Option* option : command->get_options()) {
      if (option->get_expected_min() > 0) {
        option->check(CheckNotEmpty);
      }
    }
  }
  return app;
}

}  // namespace cli
