// What a picture's file holds beside the picture, between the reader and the writer.
#pragma once

#include <OpenImageIO/imageio.h>

#include <vector>

#include "cli/frames/picture.h"
#include "cli/picture/module/metadata.h"

namespace cli {

struct FileExtras : PictureExtras {
  OIIO::ParamValueList attributes;  // those that mean the same in another file of the upright picture
  Metadata metadata;
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
/// nor the orientation, since pictures are upright.  The resolution is that of `metadata` when it has one:
/// the library mixes its numbers with the unit of another block.
OIIO::ParamValueList AttributesOf(const OIIO::ImageSpec& spec, const Metadata& metadata);

/// Whether the attribute goes into a file of `format` by itself, not in one of the blocks.
bool GoesOver(const OIIO::ParamValue& attribute, FileFormat format, const Metadata& metadata);

}  // namespace cli
