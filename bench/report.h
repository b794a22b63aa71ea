// The figures of a run: a table on standard output, row by row, and a JSON file at the end.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "effect/pixel/fast/cpu_path.h"
#include "minihost/picture/image.h"

/// What the figures of a section are and what its two columns compare.
struct Section {
  std::string title;
  std::string unit;       // of the figures, such as "ns a flake"
  std::string reference;  // heading of the form compared with
  std::string measured;   // heading of ours
};

/// One case.  `ratio` is the median of the rounds' own ratios, so it may differ a little from the quotient of
/// the two medians.
struct Row {
  std::string name = {};
  std::string depth = {};
  std::string path = {};  // CPU path, empty where there is none
  std::optional<double> reference = {};
  double measured = 0.0;
  std::optional<double> ratio = {};      // reference to measured
  std::optional<double> ratioGoal = {};  // at least
  std::optional<double> drawing = {};    // listing and blending alone
  std::optional<double> floor = {};      // the same pixels read and written back
  std::optional<double> drawingToFloor = {};
  std::optional<double> floorGoal = {};  // of drawingToFloor, at most
};

class Report {
 public:
  void Begin(const Section& section);
  void Add(const Row& row);

  /// A case whose result was wrong; the run goes on.
  void Fail(const std::string& name, const std::string& why);

  bool Failed() const { return !failures_.empty(); }

  /// Says how many cases failed and which ones miss a goal.
  void PrintSummary() const;

  /// Throws std::runtime_error when the file cannot be written.
  void WriteJson(const std::string& file, bool quick) const;

 private:
  struct SectionRows {
    Section section;
    std::vector<Row> rows;
  };

  std::vector<SectionRows> sections_;
  std::vector<std::string> failures_;
};

const char* NameOf(minihost::Depth depth);
const char* NameOf(CpuPath path);
