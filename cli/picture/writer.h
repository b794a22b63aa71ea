// Pictures to files: PNG, TIFF and EXR, encoded in memory.
#pragma once

#include <cstdint>
#include <vector>

#include "cli/frames/picture.h"
#include "cli/picture/format.h"
#include "cli/scene/settings.h"

namespace cli {

inline constexpr int kJpegQuality = 95;

/// The bytes of a file of this picture; the same picture makes the same bytes (no date is written).
///
/// Samples by depth 8, 16 and float:  PNG 8, 16, 16 bits;  TIFF 8, 16 bits, float;  EXR half, float, float;
/// JPEG 8 bits.  An EXR is of half precision too when its traits or `encoding` say so.
///
/// PNG and TIFF hold straight colour.  EXR holds colour times alpha; where alpha is 0 the colour is written
/// as it is when `traits.clearColor` says that it is light, else as 0.  JPEG shows the picture over black.
/// Without `traits.hasAlpha` alpha is left out.  The colour profile goes into all but EXR, unless the writer
/// finds it faulty.
///
/// `encoding.compression` is one that CheckCompression lets pass; empty is zip, for EXR without alpha piz.
/// Of an EXR's, pxr24, b44, b44a, dwaa and dwab change the samples; all others keep them.  A JPEG's quality
/// is `encoding.quality`, 1 to 100, or kJpegQuality, its colour as fine as its light (4:4:4).
///
/// Throws ToolError(kOutput) when the picture cannot be encoded.
std::vector<std::uint8_t> EncodePicture(const minihost::Image& image, const PictureTraits& traits,
                                        FileFormat format, const EncodingSettings& encoding = {});

}  // namespace cli
