#include "cli/output_name.h"

#include <fmt/format.h>

#include <regex>

#include "cli/tool_error.h"

namespace cli {
namespace {

// The width is two digits at most: a file name has room for no more.
const std::regex& Place() {
  static const std::regex place("#+|%(0?)([0-9]{0,2})d");
  return place;
}

}  // namespace

OutputName::OutputName(const std::filesystem::path& path) : folder_(path.parent_path()) {
  const std::string name = path.filename().string();
  if (name.empty()) {
    throw ToolError(ExitCode::kUsage, fmt::format("output '{}' has no file name", path.string()));
  }
  std::smatch place;
  if (!std::regex_search(name, place, Place())) {
    before_ = name;
    return;
  }
  before_ = place.prefix();
  after_ = place.suffix();
  if (std::regex_search(after_, Place())) {
    throw ToolError(ExitCode::kUsage,
                    fmt::format("output name '{}' has more than one place for the frame number", name));
  }
  if (place.str().front() == '#') {
    style_ = Style::kHashes;
    digits_ = place.length() == 1 ? 4 : static_cast<int>(place.length());
  } else {
    style_ = place[1].length() > 0 ? Style::kPrintfZeros : Style::kPrintfSpaces;
    digits_ = place[2].length() > 0 ? std::stoi(place[2]) : 0;
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

std::filesystem::path OutputName::SuggestedPattern() const {
  const std::filesystem::path name = before_ + after_;
  return folder_ / fmt::format("{}.####{}", name.stem().string(), name.extension().string());
}

}  // namespace cli
