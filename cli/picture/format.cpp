#include "cli/picture/format.h"

#include <fmt/format.h>

#include <algorithm>
#include <span>
#include <string>

#include "cli/file/extension.h"
#include "cli/report/error.h"
#include "cli/report/nearest_name.h"
#include "cli/report/number.h"

namespace cli {
namespace {

std::span<const std::string_view> CompressionsOf(FileFormat format) {
  static constexpr std::string_view kOfPng[] = {"none", "rle", "zip"};
  static constexpr std::string_view kOfTiff[] = {"none", "packbits", "lzw", "zip"};
  static constexpr std::string_view kOfExr[] = {"none",  "rle", "zips", "zip",  "piz",
                                                "pxr24", "b44", "b44a", "dwaa", "dwab"};
  switch (format) {
    case FileFormat::kPng:
      return kOfPng;
    case FileFormat::kTiff:
      return kOfTiff;
    case FileFormat::kExr:
      return kOfExr;
    case FileFormat::kJpeg:
      break;
  }
  return {};
}

constexpr const char* NameOf(FileFormat format) {
  switch (format) {
    case FileFormat::kPng:
      return "a PNG";
    case FileFormat::kTiff:
      return "a TIFF";
    case FileFormat::kExr:
      return "an EXR";
    case FileFormat::kJpeg:
      break;
  }
  return "a JPEG";
}

}  // namespace

std::optional<FileFormat> PictureFormatOf(const std::filesystem::path& path) {
  const std::string extension = LowerExtension(path);
  if (extension == ".png") {
    return FileFormat::kPng;
  }
  if (extension == ".tif" || extension == ".tiff") {
    return FileFormat::kTiff;
  }
  if (extension == ".exr") {
    return FileFormat::kExr;
  }
  if (extension == ".jpg" || extension == ".jpeg") {
    return FileFormat::kJpeg;
  }
  return {};
}

FileFormat FormatOf(const std::filesystem::path& path) {
  if (const auto format = PictureFormatOf(path)) {
    return *format;
  }
  Refuse(ExitCode::kUsage, "output '{}' must end in .png, .jpg, .tif or .exr", path.filename().string());
}

Compression ParseCompression(FileFormat format, std::string_view text) {
  const char* taker = NameOf(format);
  if (format == FileFormat::kJpeg) {
    Refuse(ExitCode::kUsage, "compression: '{}' is not for {}; it takes a quality, 1 to 100", text, taker);
  }
  const auto names = CompressionsOf(format);
  const std::string_view name = text.substr(0, text.find(':'));
  if (std::ranges::find(names, name) == names.end()) {
    Refuse(ExitCode::kUsage, "compression: '{}' is none of those that {} takes{}: {}", text, taker,
           SuggestNearest(name, names), fmt::join(names, ", "));
  }
  Compression compression{std::string(name)};
  if (name.size() == text.size()) {
    return compression;
  }
  constexpr int kMostLevel = 9;
  // What the libraries of the others take for 'no level'.
  const int least = format == FileFormat::kPng ? 0 : 1;
  compression.level = ParseNumber<int>(text.substr(name.size() + 1));
  if (!name.starts_with("zip")) {
    Refuse(ExitCode::kUsage, "compression: '{}' has no levels; of {} zip has, such as zip:{}", name, taker,
           kMostLevel);
  }
  if (!compression.level || *compression.level < least || *compression.level > kMostLevel) {
    Refuse(ExitCode::kUsage, "compression: '{}' is not possible; {} takes {}:{} to {}:{}", text, taker, name,
           least, name, kMostLevel);
  }
  return compression;
}

void CheckQuality(FileFormat format, int quality) {
  if (format != FileFormat::kJpeg) {
    Refuse(ExitCode::kUsage, "quality {} is for JPEG and video; other pictures keep every bit", quality);
  }
  if (quality < 1 || quality > 100) {
    Refuse(ExitCode::kUsage, "quality {} is not on the scale of JPEG, 1 to 100 (best)", quality);
  }
}

}  // namespace cli
