// A picture in memory together with what its file said about it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cli/scene/settings.h"
#include "minihost/picture/image.h"

namespace cli {

/// What the colour of a wholly transparent pixel means.
enum class ClearColor {
  kHidden,  // nothing to be seen: the file held straight colour
  kLight,   // light that is added to what is behind: the file held premultiplied colour
};

/// What a file holds beside the pixels of its picture: for the user, and in the form of the room that read it
/// for the file that becomes of it.
struct PictureExtras {
  virtual ~PictureExtras() = default;
  std::vector<std::pair<std::string, std::string>> facts;  // name and value
  std::vector<std::string> leftOut;                        // what was not read, half a sentence each
  int bits = 0;                                            // of a sample; 0 when it is not known
  std::vector<std::string> blocks;                         // beside the pixels: EXIF, XMP, ICC profile
  std::vector<std::string> channels;                       // beside colour and alpha
};

/// All that is known of a picture but its pixels.
struct PictureTraits {
  bool hasAlpha = false;     // whether the file has an alpha channel
  bool isHalf = false;       // whether its samples are of half precision, and no other was asked for
  bool isSnowAlone = false;  // what the snow fell on was left out
  ClearColor clearColor = ClearColor::kHidden;
  double pixelAspect = 1;                         // a pixel's width over its height
  std::vector<std::uint8_t> iccProfile{};         // of RGB colour; empty when the file has none
  std::shared_ptr<const PictureExtras> extras{};  // of stills
};

/// The pixel aspect that a file states, or 1 for one that no picture has: nonsense, not anamorphic.
inline double PlausibleAspect(double stated) {
  return IsPixelAspect(stated) ? stated : 1;
}

/// Straight alpha, whatever the file held.
struct Picture {
  minihost::Image image;
  PictureTraits traits;
};

}  // namespace cli
