// What a camera wrote down: the tags of EXIF, apart from the file that holds them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

struct ExifTag {
  std::uint16_t number;
  std::uint16_t type;   // as TIFF counts them, 1 to 12
  std::uint32_t count;  // of values
  std::string bytes;    // of all values, little-endian
};

using ExifDirectory = std::vector<ExifTag>;

struct Exif {
  ExifDirectory picture;  // camera, author, date, resolution
  ExifDirectory camera;   // how the picture was taken
  ExifDirectory place;    // where

  bool IsEmpty() const { return picture.empty() && camera.empty() && place.empty(); }
};

/// Of `block`, which is a TIFF or built like one, what means the same for another file of the upright
/// picture. Of the camera maker's own note, which holds only where it stood, of previews and of what is
/// damaged there is nothing.
Exif ReadExif(std::string_view block);

/// The resolution, when there is one and its unit is known.
struct Resolution {
  float across;
  float down;
  const char* unit;  // "in" or "cm"
};
bool FindResolution(const Exif& exif, Resolution& resolution);

/// A block of these tags for a picture of this size.
std::string WriteExif(const Exif& exif, int width, int height);

/// Puts the tags and, when there is one, the packet of XMP into the first directory of a TIFF, in place of
/// those of the same number.  A file too large for offsets of 32 bits stays as it is.
void AddToTiff(std::vector<std::uint8_t>& file, const Exif& exif, std::string_view xmp, int width,
               int height);

}  // namespace cli
