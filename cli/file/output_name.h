// File names of a sequence: a pattern with a place for the frame number.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace cli {

/// An output path, with or without a place for the frame number in its file name (folders are literal).
///
/// A run of `#` stands for as many digits, a lone `#` for four, a run of two `@` or more for as many digits;
/// `%d`, `%4d` and `%04d` mean what they mean in printf.  A `#` or `@` that is just that is written `\#` or
/// `\@`, or as it is where a printf place stands.  A number with more digits than the place keeps them all.
/// With `#`, a minus sign comes before the digits and is not counted among them.
class OutputName {
 public:
  /// Throws ToolError(kUsage) when the file name is empty or has more than one place for the number.
  explicit OutputName(const std::filesystem::path& path);

  /// Whether different frames get different names.
  bool IsPattern() const { return style_ != Style::kFixed; }

  std::filesystem::path ForFrame(std::int32_t frame) const;

  /// The frame of a pattern whose file has this name (without folders); empty for any other name.
  std::optional<std::int32_t> FrameOf(std::string_view name) const;

  /// Whether a frame's file, or the only one, has this name (without folders).
  bool Makes(std::string_view name) const;

  /// This name with a place for the number before its extension: out.png becomes out.####.png.
  std::filesystem::path SuggestedPattern() const;

 private:
  enum class Style { kFixed, kHashes, kPrintfZeros, kPrintfSpaces };

  /// Where the number stands in a file name; kFixed and the end of the name when nowhere.
  struct Place {
    std::size_t begin;
    std::size_t end;
    Style style;
    int digits;
  };
  static Place FindPlace(std::string_view name);
  static Place FindRun(std::string_view name);  // of # or @
  static Place FindPrintfPlace(std::string_view name);

  std::filesystem::path folder_;
  std::string before_;
  std::string after_;
  Style style_ = Style::kFixed;
  int digits_ = 0;
};

}  // namespace cli
