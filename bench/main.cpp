// vintrel_bench: measures the effect and its host library, checking every result.
#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <regex>
#include <string>

#include "bench/capsules.h"
#include "bench/cases.h"
#include "bench/in_turn.h"
#include "bench/looks.h"
#include "effect/render/fast/loop.h"
#include "effect/render/plain/loop.h"

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;

struct Options {
  bool quick = false;
  bool list = false;
  std::string filter;
  std::string json;
  std::string capsules;
  std::string drawOnce;
  std::string depth = "8";
};

std::vector<CaseSection> AllSections(Effort effort) {
  return {FlakeCases(effort), PathCases(effort),    StageCases(effort), FrameCases(effort),
          HostCases(effort),  BindingCases(effort), StrokeCases(effort)};
}

int Measure(const Options& options) {
  const Effort effort(options.quick ? Effort::kQuick : Effort::kFull);
  const std::regex filter(options.filter);
  Report report;
  bool found = false;
  for (const CaseSection& section : AllSections(effort)) {
    std::vector<Case> chosen;
    for (const Case& one : section.cases) {
      if (std::regex_search(one.name, filter)) {
        chosen.push_back(one);
      }
    }
    if (options.list) {
      for (const Case& one : chosen) {
        fmt::print("{}\n", one.name);
      }
    } else if (!chosen.empty() || (section.cases.empty() && options.filter.empty())) {
      report.Begin(section.section);
      for (const Case& one : chosen) {
        try {
          one.run(report);
        } catch (const std::exception& error) {
          report.Fail(one.name, error.what());
        }
      }
    }
    found |= !chosen.empty();
  }
  if (!found) {
    fmt::print(stderr, "vintrel_bench: no case matches '{}'; --list shows them all\n", options.filter);
    return kUsage;
  }
  if (options.list) {
    return 0;
  }
  report.PrintSummary();
  if (!options.json.empty()) {
    report.WriteJson(options.json, options.quick);
  }
  return report.Failed() ? kFailed : 0;
}

// The default frame once, for tools that count instructions.
template <class T>
int DrawOnce(const std::string& form) {
  SnowFrame<T> frame(Default(10'000));
  if (form == "plain") {
    DrawFlakesPlainly(frame.Record());
    return 0;
  }
  const CpuPath path = form == "baseline" ? CpuPath::kBaseline
                       : form == "avx2"   ? CpuPath::kAvx2
                                          : CpuPath::kAvx512;
  if (!SupportsCpuPath(path)) {
    fmt::print(stderr, "vintrel_bench: this machine cannot run the form '{}'\n", form);
    return kFailed;
  }
  DrawFlakesFast(frame.Record(), path);
  return 0;
}

int Run(const Options& options) {
  if (!options.capsules.empty()) {
    const SnowFrame<PF_Pixel> frame(Default(200'000));
    WriteCapsules(options.capsules, frame.Background().Width(), frame.Background().Height(),
                  CapsulesOf(frame.Record()));
    return 0;
  }
  if (!options.drawOnce.empty()) {
    return options.depth == "8"    ? DrawOnce<PF_Pixel>(options.drawOnce)
           : options.depth == "16" ? DrawOnce<PF_Pixel16>(options.drawOnce)
                                   : DrawOnce<PF_PixelFloat>(options.drawOnce);
  }
  return Measure(options);
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  CLI::App app(
      "Measures the effect and its host library. Two forms of a task run in turn in one process; the figures "
      "are medians, the ratios medians of each round's ratio. A wrong result ends with exit code 1.");
  app.add_option("--filter", options.filter, "Cases whose name this regular expression finds")
      ->type_name("REGEX")
      ->check([](const std::string& text) {
        try {
          std::regex{text};
          return std::string();
        } catch (const std::regex_error& error) {
          return fmt::format("'{}' is no regular expression: {}", text, error.what());
        }
      });
  app.add_flag("--quick", options.quick, "Small pictures, one round: checks results, figures mean nothing");
  app.add_flag("--list", options.list, "Name the cases and end");
  app.add_option("--json", options.json, "Write the figures to this file too")->type_name("FILE");
  app.add_option("--capsules", options.capsules, "Write 200,000 default flakes as strokes to FILE and end")
      ->type_name("FILE");
  app.add_option("--draw-once", options.drawOnce, "Draw the default frame once in this form and end")
      ->check(CLI::IsMember({"plain", "baseline", "avx2", "avx512"}));
  app.add_option("--depth", options.depth, "Depth of --draw-once (default 8)")
      ->check(CLI::IsMember({"8", "16", "float"}));
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kUsage;
  }
  try {
    return Run(options);
  } catch (const std::exception& error) {
    fmt::print(stderr, "vintrel_bench: {}\n", error.what());
    return kFailed;
  }
}
