#include "cli/picture/module/extras.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace cli {

using namespace std::string_view_literals;

OIIO::ParamValueList AttributesOf(const OIIO::ImageSpec& spec, const Metadata& metadata) {
  constexpr std::array kPrefixes = {"oiio:"sv, "jpeg:"sv, "png:"sv, "tiff:"sv, "openexr:"sv, "ICCProfile"sv};
  constexpr std::array kNames = {"Orientation"sv,
                                 "PixelAspectRatio"sv,
                                 "compression"sv,
                                 "CompressionQuality"sv,
                                 "planarconfig"sv,
                                 "chunkCount"sv,
                                 "name"sv,
                                 "type"sv,
                                 "version"sv,
                                 "Exif:PixelXDimension"sv,
                                 "Exif:PixelYDimension"sv};
  OIIO::ParamValueList attributes;
  for (const OIIO::ParamValue& attribute : spec.extra_attribs) {
    const std::string_view name = attribute.name().c_str();
    const auto starts = [&](std::string_view prefix) { return name.starts_with(prefix); };
    if (std::ranges::none_of(kPrefixes, starts) && std::ranges::find(kNames, name) == kNames.end()) {
      attributes.push_back(attribute);
    }
  }
  if (Resolution resolution; FindResolution(metadata.exif, resolution)) {
    attributes["XResolution"] = resolution.across;
    attributes["YResolution"] = resolution.down;
    attributes["ResolutionUnit"] = resolution.unit;
  }
  return attributes;
}

bool GoesOver(const OIIO::ParamValue& attribute, FileFormat format, const Metadata& metadata) {
  const std::string_view name = attribute.name().c_str();
  if (format == FileFormat::kTiff &&
      (name.starts_with("Exif:") || name == "ExposureTime" || name == "FNumber")) {
    // The library puts these in a directory of their own, for which it reads the file again.  In memory it
    // cannot, and the file is left without a picture.
    return false;
  }
  if (format == FileFormat::kExr || metadata.IsEmpty()) {
    return true;
  }
  constexpr std::array kOwn = {"XResolution"sv, "YResolution"sv, "ResolutionUnit"sv, "ImageDescription"sv};
  return std::ranges::find(kOwn, name) != kOwn.end() || (metadata.xmp.empty() && name.starts_with("IPTC:"));
}

}  // namespace cli
