// What a picture's file holds beside the picture, between the reader and the writer.
#pragma once

#include <OpenImageIO/imageio.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "cli/frames/picture.h"

namespace cli {

struct FileExtras : PictureExtras {
  OIIO::ParamValueList attributes;  // those that mean the same in another file of the upright picture
  std::string xmp;                  // as it stands in the file; may be empty
  bool isExr = false;

  // Of an EXR: further channels over the picture, pixel by pixel, each sample in its own format.
  int width = 0;
  int height = 0;
  int left = 0;  // the place of the picture in the plane
  int top = 0;
  std::vector<OIIO::TypeDesc> formats;  // of `channels`
  std::vector<char> samples;
};

/// The attributes of `spec` that go over: not those of the file's own structure, which the writer makes anew,
/// nor the orientation, since pictures are upright.
OIIO::ParamValueList AttributesOf(const OIIO::ImageSpec& spec);

/// Whether it stands in a block of its own, that of EXIF or of the place.
bool IsOfCamera(const OIIO::ParamValue& attribute);

/// The packet of a PNG, JPEG or TIFF; empty when there is none or it is compressed.
std::string XmpOf(const std::filesystem::path& path);

/// Puts the packet, and of a PNG the camera's data of `spec`, into a file that lacks them.
void AddToPng(std::vector<std::uint8_t>& file, const OIIO::ImageSpec& spec, std::string_view xmp);
void AddToJpeg(std::vector<std::uint8_t>& file, std::string_view xmp);

}  // namespace cli
