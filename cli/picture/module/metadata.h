// What stands beside the picture in a file, in blocks of its own: EXIF and XMP of a PNG, JPEG or TIFF.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/picture/format.h"
#include "cli/picture/module/exif.h"

namespace cli {

struct Metadata {
  Exif exif;
  std::string xmp;  // a packet, of the upright picture; may be empty

  bool IsEmpty() const { return exif.IsEmpty() && xmp.empty(); }
};

/// Empty where there is none, or where it is damaged or, of XMP, compressed.
Metadata ReadMetadata(const std::filesystem::path& path);

/// Puts it into a file of this format, of a picture of this size.  A JPEG has no place for more than 64 KB of
/// either block, an EXR for none.
void AddMetadata(std::vector<std::uint8_t>& file, FileFormat format, const Metadata& metadata, int width,
                 int height);

}  // namespace cli
