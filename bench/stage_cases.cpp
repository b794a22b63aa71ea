#include <fmt/core.h>

#include "bench/cases.h"
#include "bench/in_turn.h"
#include "bench/looks.h"
#include "bench/staged_loop.h"

namespace {

struct StageSamples {
  const char* stage;
  double FastSeconds::*fast;
  double PlainSeconds::*plain;  // null where the plain form has no such stage
};

constexpr StageSamples kStages[] = {{"field", &FastSeconds::field, &PlainSeconds::field},
                                    {"shading", &FastSeconds::shading, &PlainSeconds::shading},
                                    {"terms", &FastSeconds::terms, nullptr},
                                    {"list", &FastSeconds::list, nullptr},
                                    {"blend", &FastSeconds::blend, nullptr}};

template <class T>
void RunStageCase(const std::string& name, const Snow& snow, Effort effort, Report& report) {
  constexpr int kRounds = 7;
  const CpuPath path = BestCpuPath();
  SnowFrame<T> frame(effort.Scaled(snow));
  frame.SetExpected();
  std::vector<PlainSeconds> plain;
  std::vector<FastSeconds> fast;
  // Both keep the seconds of their stages; the rounds that warm up are dropped below.
  const std::vector<TimedForm> forms = {
      [&] {
        return frame.Time("the plain loop in stages",
                          [&](const FrameSetup<T>& r) { plain.push_back(DrawInStagesPlainly(r)); });
      },
      [&] {
        return frame.Time("the loop in stages",
                          [&](const FrameSetup<T>& r) { fast.push_back(DrawInStages<T>(r, path)); });
      }};
  TimeInTurn(forms, effort.Rounds(kRounds), effort.WarmUps());
  plain.erase(plain.begin(), plain.begin() + effort.WarmUps());
  fast.erase(fast.begin(), fast.begin() + effort.WarmUps());

  const double scale = 1e9 / frame.Flakes();
  const auto add = [&](const char* stage, const Samples& fastTimes, const Samples& plainTimes) {
    Row row = {.name = fmt::format("{} {}", name, stage),
               .depth = NameOf(minihost::kDepthOf<T>),
               .measured = Median(fastTimes) * scale};
    if (!plainTimes.empty()) {
      row.reference = Median(plainTimes) * scale;
      row.ratio = MedianRatio(plainTimes, fastTimes);
    }
    report.Add(row);
  };
  for (const StageSamples& stage : kStages) {
    Samples fastTimes;
    Samples plainTimes;
    for (std::size_t round = 0; round < fast.size(); ++round) {
      fastTimes.push_back(fast[round].*stage.fast);
      if (stage.plain != nullptr) {
        plainTimes.push_back(plain[round].*stage.plain);
      }
    }
    add(stage.stage, fastTimes, plainTimes);
  }
  Samples fastDrawing;
  Samples plainDrawing;
  for (std::size_t round = 0; round < fast.size(); ++round) {
    fastDrawing.push_back(fast[round].terms + fast[round].list + fast[round].blend);
    plainDrawing.push_back(plain[round].drawing);
  }
  add("terms + list + blend", fastDrawing, plainDrawing);
}

}  // namespace

CaseSection StageCases(Effort effort) {
  CaseSection cases = {{"Stages alone", "ns a flake", "plain", "fast"}, {}};
  const std::pair<const char*, Snow> looks[] = {{"10k", Default(10'000)},
                                                {"200k", Default(200'000)},
                                                {"50k size 15", LargeFlakes()},
                                                {"50k streaks", Streaks()}};
  for (const auto& [look, snow] : looks) {
    ForEachDepth([&, look = look, snow = snow](auto pixel) {
      using T = decltype(pixel);
      cases.cases.push_back({fmt::format("stages/{}/{}", look, NameOf(minihost::kDepthOf<T>)),
                             [=](Report& report) { RunStageCase<T>(look, snow, effort, report); }});
    });
  }
  return cases;
}
