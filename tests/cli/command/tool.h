// Runs the tool from its command line to its files: in this process, or as it was built.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "cli/command/commands.h"
#include "cli/command/explain.h"
#include "cli/command/options.h"
#include "cli/file/pending_file.h"
#include "cli/picture/reader.h"
#include "cli/picture/writer.h"
#include "cli/report/error.h"
#include "hostapi/commands.h"
#include "tests/support/cli/temporary_folder.h"

class Tool : public testing::Test {
 protected:
  struct Outcome {
    int code;
    std::string out;
    std::string err;
  };

  /// Runs the built tool in the folder, with these arguments as a shell reads them.
  Outcome Run(const std::string& arguments) {
    const std::string out = streams_ / "out";
    const std::string err = streams_ / "err";
    const std::string command = "cd '" + (folder_ / "").string() + "' && >'" + out + "' 2>'" + err + "' '" +
                                VINTREL_TOOL "' " + arguments;
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadAll(out), ReadAll(err)};
  }

  /// The same in this process, without the time that starting takes.  Renders and sheets alone.
  Outcome RunHere(const std::string& arguments) {
    cli::Messages messages(cli::MessageForm::kText);
    cli::CommandLine line;
    const auto app = cli::MakeParser(line);
    try {
      app->parse(arguments);
      const bool isSheet = app->got_subcommand("sheet");
      const auto code = isSheet ? cli::RenderSheet(line.shot, line.sheetCells, effect_, messages)
                                : cli::RenderShot(line.shot, effect_, messages);
      return {static_cast<int>(code), "", ""};
    } catch (const CLI::ParseError& error) {
      return {static_cast<int>(cli::ExitCode::kUsage), "", cli::Explain(*app, error, effect_->Parameters())};
    } catch (const cli::ToolError& error) {
      return {static_cast<int>(error.Code()), "", error.what()};
    }
  }

  void Render(const std::string& arguments) {
    const Outcome outcome = RunHere("render -q " + arguments);
    EXPECT_EQ(outcome.code, 0) << arguments << ": " << outcome.err;
  }

  /// A plate with slow gradients, not quite opaque when it has alpha.
  void WritePlate(const std::string& name, minihost::Depth depth, bool hasAlpha) {
    minihost::Image image(96, 64, minihost::Depth::kFloat);
    for (int row = 0; row < image.Height(); ++row) {
      auto pixels = image.Row<PF_PixelFloat>(row);
      for (std::size_t i = 0; i < pixels.size(); ++i) {
        const float light = static_cast<float>(i) / 400;
        pixels[i] = {hasAlpha ? 0.75f : 1.0f, light, 0.1f, static_cast<float>(row) / 300};
      }
    }
    // Through a float file, so that it is the reader that makes the depth.
    const auto raw = streams_ / "raw.tif";
    cli::WriteWhole(raw, cli::EncodePicture(image, {.hasAlpha = hasAlpha}, cli::FileFormat::kTiff));
    const cli::Picture plate = cli::ReadPicture(raw, depth);
    cli::WriteWhole(folder_ / name, cli::EncodePicture(plate.image, plate.traits, cli::FormatOf(name)));
  }

  /// Stands for a file's bytes.
  std::size_t Digest(const std::string& name) { return std::hash<std::string>()(ReadAll(folder_ / name)); }

  TemporaryFolder folder_;
  TemporaryFolder streams_;
  std::shared_ptr<const minihost::Effect> effect_ = minihost::Effect::Linked(&MainEntry);

 private:
  void SetUp() override { std::filesystem::current_path(folder_ / ""); }
  void TearDown() override { std::filesystem::current_path("/"); }
};
