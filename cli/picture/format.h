// Formats of picture files: their extensions and the compressions that they take.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace cli {

enum class FileFormat { kPng, kTiff, kExr, kJpeg };

/// The format that the extension stands for, upper or lower case; empty for others.
std::optional<FileFormat> PictureFormatOf(const std::filesystem::path& path);

/// The same.  Throws ToolError(kUsage) for others.
FileFormat FormatOf(const std::filesystem::path& path);

/// How the samples of a file are packed: "piz", "zip:9".
struct Compression {
  std::string name;
  std::optional<int> level{};  // of zip and zips alone: more is smaller and slower
};

/// Throws ToolError(kUsage), naming what the format takes, for a compression or a level that it does not.
Compression ParseCompression(FileFormat format, std::string_view text);
inline void CheckCompression(FileFormat format, std::string_view text) {
  ParseCompression(format, text);
}

/// Throws ToolError(kUsage) for a format without a quality, and one that is not 1 to 100.
void CheckQuality(FileFormat format, int quality);

}  // namespace cli
