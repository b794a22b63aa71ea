#include <fmt/core.h>

#include <optional>

#include "bench/cases.h"
#include "bench/in_turn.h"
#include "bench/looks.h"
#include "bench/memory_floor.h"
#include "bench/staged_loop.h"
#include "effect/render/fast/loop.h"
#include "effect/render/plain/loop.h"

namespace {

constexpr double kNano = 1e9;

struct Goals {
  std::optional<double> ratio = std::nullopt;    // plain to fast, at least
  std::optional<double> toFloor = std::nullopt;  // drawing to floor, at most
};

struct FlakeCase {
  std::string name;
  Snow snow;
  int rounds;
  Goals goals = {};
};

template <class T>
void RunFlakeCase(const FlakeCase& flakeCase, Effort effort, Report& report) {
  const CpuPath path = BestCpuPath();
  SnowFrame<T> frame(effort.Scaled(flakeCase.snow));
  frame.SetExpected();
  frame.Restore();
  const std::vector<std::uint32_t> covered = CoveredPixels(frame.Record(), path);

  enum { kPlain, kFast, kDrawing, kFirstFloor };
  std::vector<TimedForm> forms = {
      [&] { return frame.Time("the plain loop", DrawFlakesPlainly<T>); },
      [&] {
        return frame.Time("the fast loop", [path](const FrameSetup<T>& r) { DrawFlakesFast(r, path); });
      },
      [&] {
        FastSeconds seconds;
        frame.Time("the loop in stages",
                   [&](const FrameSetup<T>& record) { seconds = DrawInStages<T>(record, path); });
        return seconds.list + seconds.blend;
      }};
  for (const std::size_t distance : kPrefetchDistances) {
    forms.push_back([&, distance] { return TouchPixels(frame, covered, distance); });
  }
  const std::vector<Samples> times = TimeInTurn(forms, effort.Rounds(flakeCase.rounds), effort.WarmUps());

  const auto byMedian = [](const Samples& a, const Samples& b) { return Median(a) < Median(b); };
  const Samples& floor = *std::min_element(times.begin() + kFirstFloor, times.end(), byMedian);
  const double scale = kNano / frame.Flakes();
  report.Add({.name = flakeCase.name,
              .depth = NameOf(minihost::kDepthOf<T>),
              .path = NameOf(path),
              .reference = Median(times[kPlain]) * scale,
              .measured = Median(times[kFast]) * scale,
              .ratio = MedianRatio(times[kPlain], times[kFast]),
              .ratioGoal = effort.Goal(flakeCase.goals.ratio),
              .drawing = Median(times[kDrawing]) * scale,
              .floor = Median(floor) * scale,
              .drawingToFloor = MedianRatio(times[kDrawing], floor),
              .floorGoal = effort.Goal(flakeCase.goals.toFloor)});
}

template <class T>
void RunPathCase(const FlakeCase& pathCase, Effort effort, Report& report) {
  SnowFrame<T> frame(effort.Scaled(pathCase.snow));
  frame.SetExpected();
  std::vector<CpuPath> paths;
  std::vector<TimedForm> forms = {[&] { return frame.Time("the plain loop", DrawFlakesPlainly<T>); }};
  for (const CpuPath path : kCpuPaths) {
    if (SupportsCpuPath(path)) {
      paths.push_back(path);
      forms.push_back([&frame, path] {
        return frame.Time(NameOf(path), [path](const FrameSetup<T>& r) { DrawFlakesFast(r, path); });
      });
    }
  }
  const std::vector<Samples> times = TimeInTurn(forms, effort.Rounds(pathCase.rounds), effort.WarmUps());
  const double scale = kNano / frame.Flakes();
  for (std::size_t i = 0; i < paths.size(); ++i) {
    const bool baseline = paths[i] == CpuPath::kBaseline;
    report.Add({.name = pathCase.name,
                .depth = NameOf(minihost::kDepthOf<T>),
                .path = NameOf(paths[i]),
                .reference = Median(times[0]) * scale,
                .measured = Median(times[i + 1]) * scale,
                .ratio = MedianRatio(times[0], times[i + 1]),
                .ratioGoal = baseline ? effort.Goal(pathCase.goals.ratio) : std::nullopt});
  }
}

Snow With(Snow snow, std::initializer_list<std::pair<ParameterIndex, double>> numbers) {
  snow.numbers.insert(snow.numbers.end(), numbers);
  return snow;
}

// The goals that hold in every depth, and those of float alone.
std::vector<FlakeCase> FlakeCaseTable(bool isFloat) {
  const std::optional<double> none;
  const auto inFloat = [&](double goal) { return isFloat ? std::optional(goal) : none; };
  constexpr double kMany = 5.0;          // plain to fast at hundreds of thousands of flakes
  constexpr double kBig = 6.0;           // and where flakes are large or long
  constexpr double kSmallToFloor = 3.0;  // drawing to floor at size 3
  constexpr double kBigToFloor = 2.0;
  Snow wide = Default(200'000);
  wide.width = 3840;
  wide.height = 2160;
  const Snow many = Default(200'000);
  return {
      {"10k", Default(10'000), 25},
      {"200k lighten, lit", many, 9, {kMany, inFloat(kSmallToFloor)}},
      {"200k lighten, unlit", With(many, {{kInfluence, 0}}), 9},
      {"200k composite, lit", With(many, {{kTransferMode, kTransferComposite}}), 9},
      {"200k composite, unlit", With(many, {{kTransferMode, kTransferComposite}, {kInfluence, 0}}), 9},
      {"200k cosine wiggle", With(many, {{kStochasticWiggle, 0}}), 9},
      {"200k ground level 50", With(many, {{kGroundLevel, 50}}), 9},
      {"200k 4K", wide, 7},
      {"2M", Default(2'000'000), 5, {kMany, none}},
      {"50k size 15", LargeFlakes(), 9, {inFloat(kBig), inFloat(kBigToFloor)}},
      {"50k streaks", Streaks(), 9, {inFloat(kBig), inFloat(kBigToFloor)}},
  };
}

// Calls `add` with each case of each depth, case by case.
template <class Add>
void ForEachFlakeCase(Add&& add) {
  for (std::size_t i = 0; i < FlakeCaseTable(false).size(); ++i) {
    ForEachDepth([&](auto pixel) {
      constexpr bool kIsFloat = sizeof(pixel) == sizeof(PF_PixelFloat);
      add(pixel, FlakeCaseTable(kIsFloat)[i]);
    });
  }
}

}  // namespace

CaseSection FlakeCases(Effort effort) {
  CaseSection cases = {{"Flake loop", "ns a flake", "plain", "fast"}, {}};
  ForEachFlakeCase([&](auto pixel, const FlakeCase& flakeCase) {
    using T = decltype(pixel);
    cases.cases.push_back({fmt::format("flakes/{}/{}", flakeCase.name, NameOf(minihost::kDepthOf<T>)),
                           [=](Report& report) { RunFlakeCase<T>(flakeCase, effort, report); }});
  });
  return cases;
}

CaseSection PathCases(Effort effort) {
  constexpr double kBaselineAlone = 2.5;
  const std::vector<FlakeCase> table = {{"200k", Default(200'000), 7, {kBaselineAlone}},
                                        {"50k size 15", LargeFlakes(), 7, {kBaselineAlone}},
                                        {"50k streaks", Streaks(), 7, {kBaselineAlone}}};
  CaseSection cases = {{"CPU paths", "ns a flake", "plain", "fast"}, {}};
  for (const FlakeCase& pathCase : table) {
    ForEachDepth([&](auto pixel) {
      using T = decltype(pixel);
      cases.cases.push_back({fmt::format("paths/{}/{}", pathCase.name, NameOf(minihost::kDepthOf<T>)),
                             [=](Report& report) { RunPathCase<T>(pathCase, effort, report); }});
    });
  }
  return cases;
}
