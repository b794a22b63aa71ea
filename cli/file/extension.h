// What the end of a file's name says about the file.
#pragma once

#include <filesystem>
#include <string>

namespace cli {

/// ".png" for `plate.PNG`: letters of either case are the same.  Empty without an extension.
inline std::string LowerExtension(const std::filesystem::path& path) {
  std::string extension = path.extension().string();
  for (char& letter : extension) {
    if (letter >= 'A' && letter <= 'Z') {
      letter = static_cast<char>(letter - 'A' + 'a');
    }
  }
  return extension;
}

}  // namespace cli
