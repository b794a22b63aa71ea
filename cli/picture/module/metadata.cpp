#include "cli/picture/module/metadata.h"

#include <algorithm>
#include <fstream>
#include <string_view>

namespace cli {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kExifOfJpeg = "Exif\0\0"sv;
constexpr std::string_view kXmpOfJpeg = "http://ns.adobe.com/xap/1.0/\0"sv;
constexpr std::size_t kHeaderOfPng = 33;  // the signature, and the first chunk

void AppendBigEndian(std::string& bytes, std::size_t number, int count) {
  for (int shift = 8 * (count - 1); shift >= 0; shift -= 8) {
    bytes += static_cast<char>(number >> shift & 0xFF);
  }
}

std::size_t BigEndian(std::string_view bytes, std::size_t at, std::size_t count) {
  std::size_t number = 0;
  for (const char byte : bytes.substr(at, count)) {
    number = number << 8 | static_cast<std::uint8_t>(byte);
  }
  return number;
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
  AppendBigEndian(chunks, data.size(), 4);
  const std::size_t begin = chunks.size();
  chunks.append(type).append(data);
  AppendBigEndian(chunks, CrcOf(std::string_view(chunks).substr(begin)), 4);
}

void AppendSegment(std::string& segments, std::string_view kind, std::string_view data) {
  constexpr std::size_t kMostBytes = 65533;
  const std::size_t size = kind.size() + data.size();
  if (!data.empty() && size <= kMostBytes) {
    segments += "\xFF\xE1";
    AppendBigEndian(segments, size + 2, 2);
    segments.append(kind).append(data);
  }
}

/// The block of EXIF in a PNG's chunk or a JPEG's segment; of a TIFF all, since it is built the same way.
std::string_view ExifBlockOf(std::string_view file) {
  if (file.starts_with("\x89PNG")) {
    for (std::size_t at = 8; at + 12 <= file.size(); at += BigEndian(file, at, 4) + 12) {
      if (file.substr(at + 4, 4) == "eXIf") {
        return file.substr(at + 8, BigEndian(file, at, 4));
      }
    }
    return {};
  }
  if (file.starts_with("\xFF\xD8")) {
    constexpr char kFirstOfPicture = '\xDA';
    for (std::size_t at = 2; at + 4 <= file.size() && file[at] == '\xFF' && file[at + 1] != kFirstOfPicture;
         at += BigEndian(file, at + 2, 2) + 2) {
      const std::size_t size = std::max<std::size_t>(BigEndian(file, at + 2, 2), 2) - 2;
      if (file.substr(at + 4, size).starts_with(kExifOfJpeg)) {
        return file.substr(at + 4, size).substr(kExifOfJpeg.size());
      }
    }
    return {};
  }
  return file;
}

std::string XmpPacketOf(std::string_view file) {
  constexpr std::string_view kEnd = "</x:xmpmeta>";
  const std::size_t begin = file.find("<x:xmpmeta");
  const std::size_t end = begin == std::string::npos ? begin : file.find(kEnd, begin);
  if (end == std::string::npos) {
    return {};
  }
  std::string packet(file.substr(begin, end + kEnd.size() - begin));
  constexpr std::string_view kOrientation = "tiff:Orientation";
  for (std::size_t at = 0; (at = packet.find(kOrientation, at)) != std::string::npos;) {
    at += kOrientation.size();
    const std::size_t digit = packet.find_first_of("12345678", at);
    if (digit != std::string::npos && digit <= at + 2) {
      packet[digit] = '1';
    }
  }
  return "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>" + packet +
         "<?xpacket end=\"w\"?>";
}

void AddToPng(std::vector<std::uint8_t>& file, std::string_view exif, std::string_view xmp) {
  std::string chunks;
  if (!exif.empty()) {
    AppendChunk(chunks, "eXIf", exif);
  }
  if (!xmp.empty()) {
    AppendChunk(chunks, "iTXt", std::string("XML:com.adobe.xmp\0\0\0\0\0"sv).append(xmp));
  }
  file.insert(file.begin() + kHeaderOfPng, chunks.begin(), chunks.end());
}

void AddToJpeg(std::vector<std::uint8_t>& file, std::string_view exif, std::string_view xmp) {
  // The first segment says that this is a JPEG, and stays the first.
  const std::string_view bytes(reinterpret_cast<const char*>(file.data()), file.size());
  const std::size_t begin = bytes[3] == '\xE0' ? 4 + BigEndian(bytes, 4, 2) : 2;
  // The library writes a block of EXIF in any case.
  const bool isReplaced = !exif.empty() && bytes.substr(begin + 4).starts_with(kExifOfJpeg);
  const std::size_t end = isReplaced ? begin + 2 + BigEndian(bytes, begin + 2, 2) : begin;
  std::string segments;
  AppendSegment(segments, kExifOfJpeg, exif);
  AppendSegment(segments, kXmpOfJpeg, xmp);
  const auto at = file.erase(file.begin() + static_cast<std::ptrdiff_t>(begin),
                             file.begin() + static_cast<std::ptrdiff_t>(end));
  file.insert(at, segments.begin(), segments.end());
}

}  // namespace

Metadata ReadMetadata(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary | std::ios::ate);
  std::string file(static_cast<std::size_t>(std::max<std::streamoff>(0, stream.tellg())), '\0');
  stream.seekg(0).read(file.data(), static_cast<std::streamsize>(file.size()));
  return {ReadExif(ExifBlockOf(file)), XmpPacketOf(file)};
}

void AddMetadata(std::vector<std::uint8_t>& file, FileFormat format, const Metadata& metadata, int width,
                 int height) {
  if (metadata.IsEmpty()) {
    return;
  }
  const auto exif = [&] { return metadata.exif.IsEmpty() ? "" : WriteExif(metadata.exif, width, height); };
  switch (format) {
    case FileFormat::kPng:
      return AddToPng(file, exif(), metadata.xmp);
    case FileFormat::kTiff:
      return AddToTiff(file, metadata.exif, metadata.xmp, width, height);
    case FileFormat::kExr:
      return;  // it has attributes of its own
    case FileFormat::kJpeg:
      return AddToJpeg(file, exif(), metadata.xmp);
  }
}

}  // namespace cli
