#include "cli/picture/format.h"

#include <fmt/format.h>

#include <algorithm>
#include <span>
#include <string>

#include "cli/file/extension.h"
#include "cli/report/error.h"
#include "cli/report/nearest_name.h"

namespace cli {
namespace {

std::span<const std::string_view> CompressionsOf(FileFormat format) {
  static constexpr std::string_view kOfPng[] = {"none", "rle", "zip"};
  static constexpr std::string_view kOfTiff[] = {"none", "packbits", "lzw", "zip"};
  static constexpr std::string_view kOfExr[] = {"none",  "rle", "zips", "zip",  "piz",
                                                "pxr24", "b44", "b44a", "dwaa", "dwab"};
  return format == FileFormat::kPng    ? std::span<const std::string_view>(kOfPng)
         : format == FileFormat::kTiff ? std::span<const std::string_view>(kOfTiff)
                                       : std::span<const std::string_view>(kOfExr);
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
  return {};
}

FileFormat FormatOf(const std::filesystem::path& path) {
  if (const auto format = PictureFormatOf(path)) {
    return *format;
  }
  Refuse(ExitCode::kUsage, "output '{}' must end in .png, .tif or .exr", path.filename().string());
}

void CheckCompression(FileFormat format, std::string_view compression) {
  const auto names = CompressionsOf(format);
  if (std::ranges::find(names, compression) != names.end()) {
    return;
  }
  constexpr const char* kNames[] = {"a PNG", "a TIFF", "an EXR"};
  Refuse(ExitCode::kUsage, "compression: '{}' is none of those that {} takes{}: {}", compression,
         kNames[static_cast<int>(format)], SuggestNearest(compression, names), fmt::join(names, ", "));
}

}  // namespace cli
