#include "bench/report.h"

#include <fmt/core.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace {

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

// Names and messages are our own and hold nothing but printable ASCII.
std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      quoted += '\\';
    }
    quoted += c;
  }
  return quoted + '"';
}

std::string Member(const char* name, const std::optional<double>& value) {
  return value ? fmt::format(", \"{}\": {:.6g}", name, *value) : std::string();
}

std::string RowText(const Row& row) {
  return fmt::format("{{\"name\": {}, \"depth\": {}, \"path\": {}", Quoted(row.name), Quoted(row.depth),
                     Quoted(row.path)) +
         Member("reference", row.reference) + Member("measured", row.measured) + Member("ratio", row.ratio) +
         Member("ratioGoal", row.ratioGoal) + Member("drawing", row.drawing) + Member("floor", row.floor) +
         Member("drawingToFloor", row.drawingToFloor) + Member("floorGoal", row.floorGoal) + "}";
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
  std::ofstream out(file);
  out << "{\"compiler\": " << Quoted(__VERSION__) << ", \"quick\": " << (quick ? "true" : "false")
      << ", \"failures\": [";
  for (std::size_t i = 0; i < failures_.size(); ++i) {
    out << (i == 0 ? "" : ", ") << Quoted(failures_[i]);
  }
  out << "], \"sections\": [";
  const char* separator = "\n";
  for (const SectionRows& rows : sections_) {
    const Section& section = rows.section;
    out << separator << " {\"title\": " << Quoted(section.title) << ", \"unit\": " << Quoted(section.unit)
        << ", \"reference\": " << Quoted(section.reference) << ", \"measured\": " << Quoted(section.measured)
        << ", \"rows\": [";
    separator = "\n  ";
    for (const Row& row : rows.rows) {
      out << separator << RowText(row);
      separator = ",\n  ";
    }
    out << "]}";
    separator = ",\n";
  }
  out << "]}\n";
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
    default:
      return "float";
  }
}

const char* NameOf(CpuPath path) {
  switch (path) {
    case CpuPath::kAvx512:
      return "avx512";
    case CpuPath::kAvx2:
      return "avx2";
    default:
      return "baseline";
  }
}
