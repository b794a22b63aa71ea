// The tool's entry: parses, runs one command, and turns whatever goes wrong into a message and an exit code.
#include <fmt/format.h>
#include <malloc.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <new>
#include <string>

#include "cli/command/commands.h"
#include "cli/command/options.h"
#include "cli/report/error.h"
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
  if (std::fflush(stdout) != 0 || !written) {
    Refuse(ExitCode::kOutput, "cannot write the output");
  }
}

ExitCode Dispatch(const CLI::App& app, const cli::CommandLine& line) {
  const auto effect = minihost::Effect::Linked(&MainEntry);
  if (app.got_subcommand("render")) {
    return cli::RenderShot(line.shot, effect);
  }
  if (app.got_subcommand("sheet")) {
    return cli::RenderSheet(line.shot, line.sheetCells, effect);
  }
  if (app.got_subcommand("info")) {
    PrintToStdout(cli::InputTable(line.infoFile));
  } else if (app.got_subcommand("presets")) {
    PrintToStdout(cli::PresetTable(cli::Presets::OfTool().All()));
  } else if (app.got_subcommand("params")) {
    PrintToStdout(cli::ParameterTable(effect->Parameters()));
  } else {
    PrintToStdout(effect->About() + '\n');
  }
  return ExitCode::kDone;
}

/// A frame needs the same few large blocks as the one before.  By default the allocator gives such blocks
/// back at once, and the kernel clears them anew for every frame.
void KeepFreedMemory() {
  constexpr int kMega = 1 << 20;
  ::mallopt(M_MMAP_THRESHOLD, 32 * kMega);  // the most that is accepted
  ::mallopt(M_TRIM_THRESHOLD, 1024 * kMega);
  ::mallopt(M_TOP_PAD, 64 * kMega);
}

/// Packets and frames of video are freed on other threads than they were allocated on.  With an arena for
/// each thread the memory in use grows by kilobytes a frame.
void TakeOneArena() {
  ::mallopt(M_ARENA_MAX, 1);
}

/// Ahead of the libraries' own beginnings, in which some start threads and so make arenas.
[[gnu::section(".preinit_array"), gnu::used]] void (*const takeOneArenaFirst)() = TakeOneArena;

}  // namespace

int main(int argc, char** argv) {
  KeepFreedMemory();
  try {
    cli::CommandLine line;
    const auto app = cli::MakeParser(line);
    try {
      app->parse(argc, argv);
    } catch (const CLI::ParseError& error) {
      // Help and version come this way too, as successes.
      if (error.get_exit_code() == 0) {
        return app->exit(error);
      }
      return Fail(ExitCode::kUsage, cli::Explain(*app, error));
    }
    return static_cast<int>(Dispatch(*app, line));
  } catch (const ToolError& error) {
    return Fail(error.Code(), error.what());
  } catch (const std::bad_alloc&) {
    return Fail(ExitCode::kFrameFailed, "out of memory");
  } catch (const std::exception& error) {
    return Fail(ExitCode::kFrameFailed, error.what());
  }
}
