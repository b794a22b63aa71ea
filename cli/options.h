// The command line of the tool.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>

#include "cli/render_command.h"

namespace cli {

/// A parser for every command, filling `render`, which must outlive it.  After parsing, `got_subcommand`
/// tells the command: "render", "params" or "about"; there is exactly one.
std::unique_ptr<CLI::App> MakeParser(RenderOptions& render);

}  // namespace cli
