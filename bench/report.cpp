#include "bench/report.h"

#include <fmt/core.h>

#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

namespace {

using Json = nlohmann::ordered_json;  // members in the order in which they are written

std::string Number(const std::optional<double>& value, int decimals) {
  return value ? fmt::format("{:.{}f}", *value, decimals) : std::string();
}

bool MissesRatio(const Row& row) {
  return row.ratio && row.ratioGoal && *row.ratio < *row.ratioGoal;
}
bool MissesFloor(const Row& row) {
  return row.drawingToFloor && row.floorGoal && *row.drawingToFloor > *row.floorGoal;
}

std::string GoalText(const Row& row) {
  std::string text;
  if (row.ratioGoal) {
    text += fmt::format("  ratio >= {}{}", *row.ratioGoal, MissesRatio(row) ? ": BELOW" : "");
  }
  if (row.floorGoal) {
    text += fmt::format("  to floor <= {}{}", *row.floorGoal, MissesFloor(row) ? ": ABOVE" : "");
  }
  return text;
}

// What a row does not have is left out.
Json JsonOf(const Row& row) {
  Json json = {{"name", row.name}, {"depth", row.depth}, {"path", row.path}};
  const auto add = [&json](const char* name, const std::optional<double>& value) {
    if (value) {
      json[name] = *value;
    }
  };
  add("reference", row.reference);
  add("measured", row.measured);
  add("ratio", row.ratio);
  add("ratioGoal", row.ratioGoal);
  add("drawing", row.drawing);
  add("floor", row.floor);
  add("drawingToFloor", row.drawingToFloor);
  add("floorGoal", row.floorGoal);
  return json;
}

}  // namespace

void Report::Begin(const Section& section) {
  sections_.push_back({section, {}});
  fmt::print("\n{}, {}\n{:<34} {:>5} {:>8} {:>10} {:>10} {:>6} {:>8} {:>8} {:>8}  goals\n", section.title,
             section.unit, "case", "depth", "path", section.reference, section.measured, "ratio", "drawing",
             "floor", "to floor");
}

void Report::Add(const Row& row) {
  sections_.back().rows.push_back(row);
  fmt::print("{:<34} {:>5} {:>8} {:>10} {:>10.1f} {:>6} {:>8} {:>8} {:>8}{}\n", row.name, row.depth, row.path,
             Number(row.reference, 1), row.measured, Number(row.ratio, 2), Number(row.drawing, 1),
             Number(row.floor, 1), Number(row.drawingToFloor, 2), GoalText(row));
  std::fflush(stdout);
}

void Report::Fail(const std::string& name, const std::string& why) {
  failures_.push_back(name + ": " + why);
  fmt::print("{:<34} FAILED: {}\n", name, why);
  std::fflush(stdout);
}

void Report::PrintSummary() const {
  std::size_t rows = 0;
  std::size_t misses = 0;
  for (const SectionRows& section : sections_) {
    for (const Row& row : section.rows) {
      ++rows;
      if (MissesRatio(row) || MissesFloor(row)) {
        ++misses;
      }
    }
  }
  fmt::print("\n{} figures, {} short of a goal, {} cases with wrong results\n", rows, misses,
             failures_.size());
  for (const std::string& failure : failures_) {
    fmt::print("  {}\n", failure);
  }
}

void Report::WriteJson(const std::string& file, bool quick) const {
  Json sections = Json::array();
  for (const auto& [section, rows] : sections_) {
    Json rowsJson = Json::array();
    for (const Row& row : rows) {
      rowsJson.push_back(JsonOf(row));
    }
    sections.push_back({{"title", section.title},
                        {"unit", section.unit},
                        {"reference", section.reference},
                        {"measured", section.measured},
                        {"rows", std::move(rowsJson)}});
  }
  const Json json = {{"compiler", __VERSION__},
                     {"quick", quick},
                     {"failures", failures_},
                     {"sections", std::move(sections)}};
  std::ofstream out(file);
  out << json.dump(1) << '\n';
  out.close();
  if (!out) {
    throw std::runtime_error(fmt::format("cannot write the figures to '{}'", file));
  }
}

const char* NameOf(minihost::Depth depth) {
  switch (depth) {
    case minihost::Depth::kBits8:
      return "8";
    case minihost::Depth::kBits16:
      return "16";
    case minihost::Depth::kFloat:
      break;
  }
  return "float";
}

const char* NameOf(CpuPath path) {
  switch (path) {
    case CpuPath::kAvx512:
      return "avx512";
    case CpuPath::kAvx2:
      return "avx2";
    case CpuPath::kBaseline:
      break;
  }
  return "baseline";
}
