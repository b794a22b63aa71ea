#include "cli/picture/module/extras.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <fstream>

// As in OpenImageIO/tiffutils.h, which would want the headers of the TIFF library as well.
OIIO_NAMESPACE_BEGIN
OIIO_API void encode_exif(const ImageSpec& spec, std::vector<char>& blob);  // NOLINT: their name
OIIO_NAMESPACE_END

namespace cli {
namespace {

using namespace std::string_view_literals;

void AppendBigEndian(std::string& bytes, std::uint32_t number, int count) {
  for (int shift = 8 * (count - 1); shift >= 0; shift -= 8) {
    bytes += static_cast<char>(number >> shift & 0xFF);
  }
}

std::uint32_t CrcOf(std::string_view bytes) {
  std::uint32_t crc = ~0u;
  for (const char byte : bytes) {
    crc ^= static_cast<std::uint8_t>(byte);
    for (int bit = 0; bit < 8; ++bit) {
      crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1)));
    }
  }
  return ~crc;
}

void AppendChunk(std::string& chunks, std::string_view type, std::string_view data) {
  AppendBigEndian(chunks, static_cast<std::uint32_t>(data.size()), 4);
  const std::size_t begin = chunks.size();
  chunks.append(type).append(data);
  AppendBigEndian(chunks, CrcOf(std::string_view(chunks).substr(begin)), 4);
}

}  // namespace

bool IsOfCamera(const OIIO::ParamValue& attribute) {
  const std::string_view name = attribute.name().c_str();
  return name.starts_with("Exif:") || name.starts_with("GPS:") || name == "ExposureTime" || name == "FNumber";
}

OIIO::ParamValueList AttributesOf(const OIIO::ImageSpec& spec) {
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
  return attributes;
}

std::string XmpOf(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary | std::ios::ate);
  std::string bytes(static_cast<std::size_t>(std::max<std::streamoff>(0, stream.tellg())), '\0');
  stream.seekg(0).read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  constexpr std::string_view kEnd = "</x:xmpmeta>";
  const std::size_t begin = bytes.find("<x:xmpmeta");
  const std::size_t end = begin == std::string::npos ? begin : bytes.find(kEnd, begin);
  if (end == std::string::npos) {
    return {};
  }
  std::string packet = bytes.substr(begin, end + kEnd.size() - begin);
  constexpr std::string_view kOrientation = "tiff:Orientation";
  for (std::size_t at = 0; (at = packet.find(kOrientation, at)) != std::string::npos;) {
    at += kOrientation.size();
    const std::size_t digit = packet.find_first_of("12345678", at);
    if (digit != std::string::npos && digit <= at + 2) {
      packet[digit] = '1';
    }
  }
  return packet;
}

void AddToPng(std::vector<std::uint8_t>& file, const OIIO::ImageSpec& spec, std::string_view xmp) {
  constexpr std::ptrdiff_t kAfterHeader = 33;
  std::string chunks;
  if (std::ranges::any_of(spec.extra_attribs, IsOfCamera)) {
    std::vector<char> block;
    OIIO::encode_exif(spec, block);
    AppendChunk(chunks, "eXIf", {block.data(), block.size()});
  }
  if (!xmp.empty()) {
    AppendChunk(chunks, "iTXt", std::string("XML:com.adobe.xmp\0\0\0\0\0"sv).append(xmp));
  }
  file.insert(file.begin() + kAfterHeader, chunks.begin(), chunks.end());
}

void AddToJpeg(std::vector<std::uint8_t>& file, std::string_view xmp) {
  constexpr std::size_t kMostBytes = 65533;  // of a segment
  const std::string data = std::string("http://ns.adobe.com/xap/1.0/\0"sv).append(xmp);
  if (xmp.empty() || data.size() > kMostBytes) {
    return;
  }
  std::string segment = "\xFF\xE1";
  AppendBigEndian(segment, static_cast<std::uint32_t>(data.size() + 2), 2);
  segment += data;
  // The first segment says that this is a JPEG, and stays the first.
  const int at = file[3] == 0xE0 ? 4 + file[4] * 256 + file[5] : 2;
  file.insert(file.begin() + at, segment.begin(), segment.end());
}

}  // namespace cli
