#include "cli/file/output_name.h"

#include <fmt/format.h>

#include <algorithm>

#include "cli/report/error.h"
#include "cli/report/number.h"

namespace cli {

namespace {

constexpr char kEscape = '\\';

bool IsMark(char letter) {
  return letter == '#' || letter == '@';
}

bool IsEscape(std::string_view name, std::size_t at) {
  return name[at] == kEscape && at + 1 < name.size() && IsMark(name[at + 1]);
}

/// The name with \# as # and \@ as @.
std::string Unescaped(std::string_view name) {
  std::string plain;
  for (std::size_t at = 0; at < name.size(); ++at) {
    if (!IsEscape(name, at)) {
      plain += name[at];
    }
  }
  return plain;
}

}  // namespace

OutputName::Place OutputName::FindPlace(std::string_view name) {
  const Place place = FindPrintfPlace(name);
  return place.style != Style::kFixed ? place : FindRun(name);
}

OutputName::Place OutputName::FindRun(std::string_view name) {
  for (std::size_t begin = 0; begin < name.size(); ++begin) {
    if (IsEscape(name, begin)) {
      ++begin;
      continue;
    }
    if (!IsMark(name[begin])) {
      continue;
    }
    const std::size_t end = std::min(name.find_first_not_of(name[begin], begin), name.size());
    const int run = static_cast<int>(end - begin);
    if (name[begin] == '#') {
      return {begin, end, Style::kHashes, run == 1 ? 4 : run};
    }
    // One alone stands in names and addresses.
    if (run > 1) {
      return {begin, end, Style::kHashes, run};
    }
  }
  return {name.size(), name.size(), Style::kFixed, 0};
}

OutputName::Place OutputName::FindPrintfPlace(std::string_view name) {
  const auto isDigit = [&](std::size_t at) { return at < name.size() && name[at] >= '0' && name[at] <= '9'; };
  for (std::size_t begin = 0; begin < name.size(); ++begin) {
    if (name[begin] != '%') {
      continue;
    }
    std::size_t end = begin + 1;
    const bool zeros = isDigit(end) && name[end] == '0';
    if (zeros) {
      ++end;
    }
    int digits = 0;
    // Two digits of width at most: a file name has room for no more.
    for (int i = 0; i < 2 && isDigit(end); ++i) {
      digits = digits * 10 + (name[end++] - '0');
    }
    if (end == name.size() || name[end] != 'd') {
      continue;  // a percent sign that is just that
    }
    return {begin, end + 1, zeros ? Style::kPrintfZeros : Style::kPrintfSpaces, digits};
  }
  return {name.size(), name.size(), Style::kFixed, 0};
}

OutputName::OutputName(const std::filesystem::path& path) : folder_(path.parent_path()) {
  const std::string name = path.filename().string();
  if (name.empty()) {
    Refuse(ExitCode::kUsage, "output '{}' has no file name", path.string());
  }
  const Place place = FindPlace(name);
  before_ = name.substr(0, place.begin);
  after_ = name.substr(place.end);
  style_ = place.style;
  digits_ = place.digits;
  const bool isRun = style_ == Style::kHashes;
  if (isRun ? FindRun(after_).style != Style::kFixed : FindPrintfPlace(after_).style != Style::kFixed) {
    Refuse(ExitCode::kUsage,
           "output name '{}' has more than one place for the frame number; a # that is just that is \\#",
           name);
  }
  if (isRun || style_ == Style::kFixed) {
    before_ = Unescaped(before_);
    after_ = Unescaped(after_);
  }
}

std::filesystem::path OutputName::ForFrame(std::int32_t frame) const {
  const std::int64_t magnitude = frame < 0 ? -std::int64_t{frame} : frame;
  switch (style_) {
    case Style::kFixed:
      return folder_ / before_;
    case Style::kHashes:
      return folder_ / fmt::format("{}{}{:0{}}{}", before_, frame < 0 ? "-" : "", magnitude, digits_, after_);
    case Style::kPrintfZeros:
      return folder_ / fmt::format("{}{:0{}}{}", before_, frame, digits_, after_);
    case Style::kPrintfSpaces:
      return folder_ / fmt::format("{}{:{}}{}", before_, frame, digits_, after_);
  }
  return {};
}

std::optional<std::int32_t> OutputName::FrameOf(std::string_view name) const {
  if (!IsPattern()) {
    return {};
  }
  if (name.size() < before_.size() + after_.size() || !name.starts_with(before_) || !name.ends_with(after_)) {
    return {};
  }
  std::string_view place = name.substr(before_.size(), name.size() - before_.size() - after_.size());
  place.remove_prefix(std::min(place.find_first_not_of(' '), place.size()));
  const auto frame = ParseNumber<std::int32_t>(place);
  // Another number of digits makes another name.
  if (!frame || ForFrame(*frame).filename() != name) {
    return {};
  }
  return frame;
}

bool OutputName::Makes(std::string_view name) const {
  return IsPattern() ? FrameOf(name).has_value() : name == before_;
}

std::filesystem::path OutputName::SuggestedPattern() const {
  const std::filesystem::path name = before_ + after_;
  return folder_ / fmt::format("{}.####{}", name.stem().string(), name.extension().string());
}

}  // namespace cli
