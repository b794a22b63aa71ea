// Formats of picture files: their extensions and the compressions that they take.
#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace cli {

enum class FileFormat { kPng, kTiff, kExr };

/// The format that the extension stands for, upper or lower case; empty for others.
std::optional<FileFormat> PictureFormatOf(const std::filesystem::path& path);

/// The same.  Throws ToolError(kUsage) for others.
FileFormat FormatOf(const std::filesystem::path& path);

/// Throws ToolError(kUsage), naming those that the format takes, for a compression that it does not.
void CheckCompression(FileFormat format, std::string_view compression);

}  // namespace cli
