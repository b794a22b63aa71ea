// What the module of pictures exports: the reader and the writer, with the libraries that they need.
#pragma once

#include "cli/picture/reader.h"
#include "cli/picture/writer.h"

namespace cli {

struct PictureModule {
  decltype(&ReadPicture) read;
  decltype(&EncodePicture) encode;
};

/// Sets the libraries up; the one name that the module exports.
inline constexpr char kPictureModuleName[] = "VintrelPictures";
using GetPictureModule = const PictureModule*();

}  // namespace cli
