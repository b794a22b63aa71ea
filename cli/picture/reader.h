// Pictures from files: PNG, JPEG, TIFF and EXR become straight alpha in the effect's order and depth.
#pragma once

#include <filesystem>
#include <optional>

#include "cli/frames/picture.h"

namespace cli {

/// Reads the first picture of a file, upright.
///
/// Without `depth` the file decides: up to 8 bits a channel stay 8, up to 16 stay 16, all else is float.
/// Samples go from the file's precision to the depth in one step (ConvertSample).  Grey becomes three
/// equal colours; without alpha every pixel is opaque.  Premultiplied colour is divided by alpha, except
/// where alpha is 0 or below: there it stays as it is.  Colour values are not converted otherwise.
///
/// Of an EXR the display window is the picture; what the data window leaves out is transparent black, or
/// opaque black without alpha.
///
/// Throws ToolError(kInput), naming the file.
Picture ReadPicture(const std::filesystem::path& path, std::optional<minihost::Depth> depth = {});

}  // namespace cli
