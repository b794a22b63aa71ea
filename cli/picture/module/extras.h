// What a picture's file holds beside the picture, between the reader and the writer.
#pragma once

#include <OpenImageIO/imageio.h>

#include <cstddef>
#include <vector>

#include "cli/frames/picture.h"
#include "cli/picture/module/metadata.h"

namespace cli {

/// Pixels of a picture and around it.
struct Area {
  int left;  // of the picture's first column; 0 or less
  int top;
  int width;
  int height;

  std::size_t Count() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height); }

  /// Which one a pixel of the picture is.
  std::size_t Find(int column, int row) const {
    return static_cast<std::size_t>(row - top) * static_cast<std::size_t>(width) +
           static_cast<std::size_t>(column - left);
  }
};

struct FileExtras : PictureExtras {
  OIIO::ParamValueList attributes;  // those that mean the same in another file of the upright picture
  Metadata metadata;
  bool isExr = false;

  // Of an EXR: the size of the picture, and its place in the plane.
  int width = 0;
  int height = 0;
  int left = 0;
  int top = 0;

  // Of an EXR, over its area, pixel by pixel: further channels, each sample in its own format; and, when some
  // of it lies outside of the picture, colour and alpha as they stand in the file.  What the file lacks is 0.
  Area area{};
  std::vector<OIIO::TypeDesc> formats;  // of `channels`
  std::vector<char> samples;
  std::vector<float> colors;
  int colorCount = 0;  // of each pixel: 3, or 4 with alpha
};

/// The attributes of `spec` that go over: not those of the file's own structure, which the writer makes anew,
/// nor the orientation, since pictures are upright.  The resolution is that of `metadata` when it has one:
/// the library mixes its numbers with the unit of another block.
OIIO::ParamValueList AttributesOf(const OIIO::ImageSpec& spec, const Metadata& metadata);

/// Whether the attribute goes into a file of `format` by itself, not in one of the blocks.
bool GoesOver(const OIIO::ParamValue& attribute, FileFormat format, const Metadata& metadata);

}  // namespace cli
