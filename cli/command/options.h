// The command line of the tool.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "cli/command/render_options.h"

namespace cli {

struct Options {
  RenderOptions render;  // of render and sheet
  int sheetFrames = 12;
  std::string infoFile;
};

/// A parser for every command, filling `options`, which must outlive it.  After parsing, `got_subcommand`
/// tells the command: "render", "sheet", "info", "params", "presets" or "about"; there is exactly one.
std::unique_ptr<CLI::App> MakeParser(Options& options);

/// What a parser that has refused a command line says, with the nearest of what there is.
std::string Explain(const CLI::App& app, const CLI::ParseError& error);

}  // namespace cli
