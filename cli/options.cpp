#include "cli/options.h"

namespace cli {
namespace {

void AddRender(CLI::App& app, RenderOptions& options) {
  CLI::App* render = app.add_subcommand("render", "Draw snow on a picture, as one frame or a sequence");
  render->add_option("PHOTO", options.photo, "Picture to snow on: PNG, JPEG, TIFF or EXR")->required();
  render->add_option("-o,--output", options.output, "Result: .png, .tif or .exr; #### is the frame's number")
      ->required()
      ->type_name("FILE");
  render->add_option("--frames", options.frames, "Frames to render: 7, 0-47 or 0-10,20 (default 0)")
      ->type_name("LIST");
  render->add_option("--set", options.assignments, "Set a parameter; may be repeated (see: vintrel params)")
      ->type_name("NAME=VALUE")
      ->allow_extra_args(false);
  render->add_option("--seed", options.seed, "Another fall of snow: short for --set random-seed=N")
      ->type_name("N");
  render->add_flag("--only-snow", options.onlySnow, "Snow alone, on a transparent ground");
  render->add_option("--fps", options.fps, "Frames a second: 24 (default), 23.976, 30000/1001")
      ->type_name("RATE");
  render->add_option("--shutter", options.shutterDegrees, "Motion blur, 1 to 720 degrees (default 180)")
      ->type_name("DEGREES");
  render->add_option("--depth", options.depth, "8, 16 or float (default: the picture's)")->type_name("DEPTH");
  render->add_flag("-q,--quiet", options.quiet, "No summary at the end");
  render->footer(
      "Examples:\n"
      "  vintrel render street.png -o snow.png\n"
      "  vintrel render street.png -o snow.png --set Flakes=20000 --set \"Size=4\"\n"
      "  vintrel render street.jpg -o frames/snow.####.png --frames 0-47 --fps 25\n"
      "  vintrel render plate.exr -o snow.exr --only-snow --set wiggle/amount=40");
}

}  // namespace

std::unique_ptr<CLI::App> MakeParser(RenderOptions& render) {
  auto app = std::make_unique<CLI::App>("Falling snow with depth, light and motion blur", "vintrel");
  app->set_version_flag("--version", "vintrel " VINTREL_VERSION);
  app->require_subcommand(1);
  AddRender(*app, render);
  app->add_subcommand("params", "List the parameters that --set takes")
      ->footer("Example:\n  vintrel params | grep -i wiggle");
  app->add_subcommand("about", "Say what the effect says about itself");
  app->footer(
      "'vintrel COMMAND --help' tells more.\n"
      "Exit codes: 0 done, 1 a frame failed, 2 command line, 3 input, 4 output.");
  return app;
}

}  // namespace cli
