// The cases, by section.  A case builds its pictures when it runs and frees them before the next.
#pragma once

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "bench/report.h"
#include "bench/snow_frame.h"

struct Case {
  std::string name;  // what the filter sees: section/case/depth
  std::function<void(Report&)> run;
};

struct CaseSection {
  Section section;
  std::vector<Case> cases;
};

/// How much work a run makes of its cases.
class Effort {
 public:
  enum Kind { kFull, kQuick };
  explicit Effort(Kind kind) : kind_(kind) {}

  int Rounds(int full) const { return kind_ == kFull ? full : 1; }
  int WarmUps() const { return kind_ == kFull ? 1 : 0; }

  /// No goals where figures mean nothing.
  std::optional<double> Goal(std::optional<double> full) const {
    return kind_ == kFull ? full : std::nullopt;
  }

  /// A twentieth of the flakes, on a sixteenth of the picture.
  Snow Scaled(Snow snow) const {
    if (kind_ == kQuick) {
      snow.width /= 4;
      snow.height /= 4;
      for (auto& [index, value] : snow.numbers) {
        value = index == kFlakes ? std::max(value / 20, 500.0) : value;
      }
    }
    return snow;
  }

 private:
  Kind kind_;
};

CaseSection FlakeCases(Effort effort);    // the loop, plain and fast, and the memory floor
CaseSection PathCases(Effort effort);     // the loop on every CPU path of the machine
CaseSection StageCases(Effort effort);    // each stage alone
CaseSection FrameCases(Effort effort);    // the default frame against copying the picture
CaseSection HostCases(Effort effort);     // the host's services
CaseSection BindingCases(Effort effort);  // the effect in its bindings
CaseSection StrokeCases(Effort effort);   // the same capsules as strokes of a 2D library, where it is there

/// Calls `task` with a zero pixel of each depth.
template <class Task>
void ForEachDepth(Task&& task) {
  task(PF_Pixel{});
  task(PF_Pixel16{});
  task(PF_PixelFloat{});
}
