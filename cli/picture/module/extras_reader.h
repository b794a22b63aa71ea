// What a picture's file holds beside the picture, from the file.
#pragma once

#include <memory>

#include "cli/frames/picture.h"
#include "cli/picture/module/open_file.h"

namespace cli {

/// A FileExtras.  Throws ToolError(kInput) for channels that cannot be read.
std::shared_ptr<const PictureExtras> ReadExtras(OpenFile& file);

}  // namespace cli
