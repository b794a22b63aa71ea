// The tool's entry: parses, runs one command, and turns whatever goes wrong into a message and an exit code.
#include <malloc.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "cli/command/commands.h"
#include "cli/command/explain.h"
#include "cli/command/options.h"
#include "cli/report/error.h"
#include "cli/report/interrupt.h"
#include "cli/report/messages.h"
#include "hostapi/commands.h"
#include "minihost/effect.h"

namespace {

using cli::ExitCode;
using cli::ToolError;

ExitCode Dispatch(const CLI::App& app, const cli::CommandLine& line, cli::Messages& messages) {
  if (app.got_subcommand("check")) {
    return cli::CheckModule(line.check, &MainEntry);
  }
  const auto effect = minihost::Effect::Linked(&MainEntry);
  if (app.got_subcommand("render")) {
    return cli::RenderShot(line.shot, effect, messages);
  }
  if (app.got_subcommand("sheet")) {
    return cli::RenderSheet(line.shot, line.sheetCells, effect, messages);
  }
  if (app.got_subcommand("panel")) {
    return cli::OpenPanel(line.panel, *effect, messages);
  }
  if (app.got_subcommand("info")) {
    cli::PrintToStdout(
        cli::DescribeInput(line.infoFile, line.infoAsJson ? cli::InfoForm::kJson : cli::InfoForm::kText));
  } else if (app.got_subcommand("presets")) {
    cli::PrintToStdout(cli::PresetTable(cli::Presets::OfTool().All()));
  } else if (app.got_subcommand("params")) {
    cli::PrintToStdout(cli::ParameterTable(effect->Parameters()));
  } else {
    cli::PrintToStdout(effect->About() + '\n');
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

ExitCode RunCommand(int argc, char** argv, cli::Messages& messages) {
  cli::CommandLine line;
  const auto app = cli::MakeParser(line);
  const std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
  if (const std::string foreign = cli::ExplainForeign(*app, arguments); !foreign.empty()) {
    cli::Refuse(ExitCode::kUsage, "{}", foreign);
  }
  try {
    app->parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    // Help and version come this way too, as successes.
    if (error.get_exit_code() == 0) {
      std::ostringstream text;
      app->exit(error, text);
      cli::PrintToStdout(text.str());
      return ExitCode::kDone;
    }
    cli::Refuse(ExitCode::kUsage, "{}",
                cli::Explain(*app, error, minihost::Effect::Linked(&MainEntry)->Parameters()));
  }
  return Dispatch(*app, line, messages);
}

/// What goes wrong, as a message and a code.
ExitCode Run(int argc, char** argv, cli::Messages& messages) {
  ExitCode code = ExitCode::kFrameFailed;
  std::string text;
  try {
    return RunCommand(argc, argv, messages);
  } catch (const ToolError& error) {
    code = error.Code();
    text = error.what();
  } catch (const std::bad_alloc&) {
    text = "out of memory";
  } catch (const std::exception& error) {
    text = error.what();
  }
  messages.Error(code, text);
  return code;
}

}  // namespace

int main(int argc, char** argv) {
  cli::WatchForInterrupts();
  KeepFreedMemory();
  cli::Messages messages(cli::FormOf({argv, argv + argc}));
  const ExitCode code = Run(argc, argv, messages);
  messages.EndEarly(code);
  return static_cast<int>(code);
}
