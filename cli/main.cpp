// The tool's entry: parses, runs one command, and turns whatever goes wrong into a message and an exit code.
#include <fmt/format.h>

#include <cstdio>
#include <exception>
#include <new>
#include <string>

#include "cli/options.h"
#include "cli/params_command.h"
#include "cli/render_command.h"
#include "cli/tool_error.h"
#include "hostapi/commands.h"
#include "minihost/effect.h"

namespace {

using cli::ExitCode;
using cli::ToolError;

int Fail(ExitCode code, const std::string& message) {
  fmt::print(stderr, "vintrel: {}\n", message);
  return static_cast<int>(code);
}

/// Output that somebody asked for has to arrive: a full disk is an error.
void PrintToStdout(const std::string& text) {
  const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
  if (std::fflush(stdout) != 0 || !written) throw ToolError(ExitCode::kOutput, "cannot write the output");
}

void Run(const CLI::App& app, const cli::RenderOptions& render) {
  const auto effect = minihost::Effect::Linked(&MainEntry);
  if (app.got_subcommand("params")) {
    PrintToStdout(cli::ParameterTable(effect->parameters()));
  } else if (app.got_subcommand("about")) {
    PrintToStdout(effect->About() + '\n');
  } else {
    const std::string summary = cli::RunRender(render, effect);
    if (!render.quiet) fmt::print(stderr, "{}\n", summary);
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    cli::RenderOptions render;
    const auto app = cli::MakeParser(render);
    try {
      app->parse(argc, argv);
    } catch (const CLI::ParseError& error) {
      // Help and version come this way too, as successes.
      return app->exit(error) == 0 ? 0 : static_cast<int>(ExitCode::kUsage);
    }
    Run(*app, render);
    return static_cast<int>(ExitCode::kDone);
  } catch (const ToolError& error) {
    return Fail(error.Code(), error.what());
  } catch (const std::bad_alloc&) {
    return Fail(ExitCode::kFrameFailed, "out of memory");
  } catch (const std::exception& error) {
    return Fail(ExitCode::kFrameFailed, error.what());
  }
}
