#include "cli/picture/module/exif.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <optional>
#include <utility>

namespace cli {
namespace {

constexpr std::uint16_t kXResolution = 282;
constexpr std::uint16_t kYResolution = 283;
constexpr std::uint16_t kResolutionUnit = 296;
constexpr std::uint16_t kXmp = 700;
constexpr std::uint16_t kCamera = 0x8769;
constexpr std::uint16_t kPlace = 0x8825;
constexpr std::uint16_t kMakerNote = 0x927C;
constexpr std::uint16_t kWidth = 0xA002;
constexpr std::uint16_t kHeight = 0xA003;
constexpr std::uint16_t kInteroperability = 0xA005;  // the place of another directory

/// Those of a picture's directory that say nothing of how its file is built, nor how it was held: name,
/// description, maker, model, page, resolution, software, date, author, computer, copyright, rating, and what
/// Windows asks for.
constexpr std::array<std::uint16_t, 20> kOfPicture = {
    269, 270, 271,    272,    285,    kXResolution, kYResolution, kResolutionUnit, 305,    306,
    315, 316, 0x4746, 0x4749, 0x9C9B, 0x9C9C,       0x9C9D,       0x9C9E,          0x9C9F, 33432};

enum : std::uint16_t { kByte = 1, kLong = 4, kRational = 5 };
constexpr std::array<std::uint8_t, 13> kTypeSizes = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};
constexpr std::array<std::uint8_t, 13> kNumberSizes = {1, 1, 1, 2, 4, 4, 1, 1, 2, 4, 4, 4, 8};

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kEntrySize = 12;
constexpr std::size_t kValueSize = 4;  // of an entry: the values when they fit, or their place

std::string LittleEndian(std::size_t number, std::size_t size) {
  std::string bytes;
  for (std::size_t i = 0; i < size; ++i) {
    bytes += static_cast<char>(number >> (8 * i) & 0xFF);
  }
  return bytes;
}

std::uint32_t NumberIn(std::string_view littleEndian, std::size_t at, std::size_t size) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < size; ++i) {
    number |= std::uint32_t{static_cast<std::uint8_t>(littleEndian[at + i])} << (8 * i);
  }
  return number;
}

class Reader {
 public:
  explicit Reader(std::string_view block) : block_(block), isBigEndian_(block.starts_with("MM")) {}

  bool CanRead() const {
    return block_.size() >= kHeaderSize && (isBigEndian_ || block_.starts_with("II")) && Number(2, 2) == 42;
  }
  std::size_t First() const { return Number(4, 4); }

  /// The tags whose values lie within the block and are no larger than EXIF allows for all of them.  Values
  /// may overlap, so that a small file can claim many.
  ExifDirectory Directory(std::size_t at) const {
    ExifDirectory tags;
    if (at + 2 > block_.size()) {
      return tags;
    }
    constexpr std::size_t kMostBytes = 65535;
    std::size_t left = kMostBytes;
    const std::size_t count = Number(at, 2);
    for (std::size_t i = 0; i < count && at + 2 + (i + 1) * kEntrySize <= block_.size(); ++i) {
      auto tag = Tag(at + 2 + i * kEntrySize, left);
      if (tag) {
        left -= tag->bytes.size();
        tags.push_back(std::move(*tag));
      }
    }
    return tags;
  }

 private:
  std::uint32_t Number(std::size_t at, std::size_t size) const {
    std::string bytes(block_.substr(at, size));
    if (isBigEndian_) {
      std::ranges::reverse(bytes);
    }
    return NumberIn(bytes, 0, size);
  }

  std::optional<ExifTag> Tag(std::size_t at, std::size_t mostBytes) const {
    ExifTag tag{static_cast<std::uint16_t>(Number(at, 2)),
                static_cast<std::uint16_t>(Number(at + 2, 2)),
                Number(at + 4, 4),
                {}};
    if (tag.type == 0 || tag.type >= kTypeSizes.size()) {
      return {};
    }
    const std::size_t size = std::size_t{tag.count} * kTypeSizes[tag.type];
    const std::size_t place = size <= kValueSize ? at + kEntrySize - kValueSize : Number(at + 8, 4);
    if (size > mostBytes || place > block_.size() || size > block_.size() - place) {
      return {};
    }
    tag.bytes = block_.substr(place, size);
    if (isBigEndian_) {
      const std::ptrdiff_t each = kNumberSizes[tag.type];
      for (auto first = tag.bytes.begin(); first != tag.bytes.end(); first += each) {
        std::reverse(first, first + each);
      }
    }
    return tag;
  }

  std::string_view block_;
  bool isBigEndian_;
};

const ExifTag* Find(const ExifDirectory& tags, std::uint16_t number) {
  const auto found = std::ranges::find(tags, number, &ExifTag::number);
  return found == tags.end() ? nullptr : &*found;
}

ExifTag Long(std::uint16_t number, std::size_t value) {
  return {number, kLong, 1, LittleEndian(value, 4)};
}

void Set(ExifDirectory& tags, ExifTag tag) {
  std::erase_if(tags, [&](const ExifTag& other) { return other.number == tag.number; });
  tags.push_back(std::move(tag));
}

/// Entries that stand in a file, and the values behind them that do not fit in.
class Writer {
 public:
  /// `size` is that of the file so far.
  explicit Writer(std::size_t size) : size_(size) {}

  /// What has been added to the file.
  const std::string& Bytes() const { return bytes_; }

  /// The entry of a tag, its values added.
  std::string Entry(const ExifTag& tag) {
    std::string value = tag.bytes;
    if (value.size() > kValueSize) {
      value = LittleEndian(Add(value), kValueSize);
    }
    value.resize(kValueSize);
    return LittleEndian(tag.number, 2) + LittleEndian(tag.type, 2) + LittleEndian(tag.count, 4) + value;
  }

  /// Adds a directory of these entries, sorted, with none after it; its place.
  std::size_t AddDirectory(std::vector<std::string> entries) {
    std::ranges::sort(entries, {}, [](const std::string& entry) { return NumberIn(entry, 0, 2); });
    std::string directory = LittleEndian(entries.size(), 2);
    for (const std::string& entry : entries) {
      directory += entry;
    }
    return Add(directory + LittleEndian(0, 4));
  }

  std::size_t AddDirectory(const ExifDirectory& tags) {
    std::vector<std::string> entries;
    std::ranges::transform(tags, std::back_inserter(entries),
                           [this](const ExifTag& tag) { return Entry(tag); });
    return AddDirectory(std::move(entries));
  }

 private:
  /// Places are even.
  std::size_t Add(std::string_view bytes) {
    bytes_.resize(bytes_.size() + (size_ + bytes_.size()) % 2);
    const std::size_t place = size_ + bytes_.size();
    bytes_ += bytes;
    return place;
  }

  std::size_t size_;
  std::string bytes_;
};

/// The tags of the picture with the places of the other directories, which are added.
ExifDirectory AddOthers(const Exif& exif, int width, int height, Writer& writer) {
  ExifDirectory picture = exif.picture;
  ExifDirectory camera = exif.camera;
  Set(camera, Long(kWidth, static_cast<std::size_t>(width)));
  Set(camera, Long(kHeight, static_cast<std::size_t>(height)));
  Set(picture, Long(kCamera, writer.AddDirectory(camera)));
  if (!exif.place.empty()) {
    Set(picture, Long(kPlace, writer.AddDirectory(exif.place)));
  }
  return picture;
}

}  // namespace

Exif ReadExif(std::string_view block) {
  const Reader reader(block);
  Exif exif;
  if (!reader.CanRead()) {
    return exif;
  }
  exif.picture = reader.Directory(reader.First());
  const auto behind = [&](std::uint16_t number) {
    const ExifTag* tag = Find(exif.picture, number);
    return tag != nullptr && tag->bytes.size() == 4 ? reader.Directory(NumberIn(tag->bytes, 0, 4))
                                                    : ExifDirectory();
  };
  exif.camera = behind(kCamera);
  exif.place = behind(kPlace);
  std::erase_if(exif.picture, [](const ExifTag& tag) {
    return std::ranges::find(kOfPicture, tag.number) == kOfPicture.end();
  });
  std::erase_if(exif.camera, [](const ExifTag& tag) {
    return tag.number == kMakerNote || tag.number == kInteroperability || tag.number == kWidth ||
           tag.number == kHeight;
  });
  return exif;
}

bool FindResolution(const Exif& exif, Resolution& resolution) {
  const auto ratio = [&](std::uint16_t number) {
    const ExifTag* tag = Find(exif.picture, number);
    if (tag == nullptr || tag->type != kRational || tag->bytes.size() != 8) {
      return 0.0f;
    }
    const std::uint32_t below = NumberIn(tag->bytes, 4, 4);
    return below == 0 ? 0.0f : static_cast<float>(NumberIn(tag->bytes, 0, 4)) / static_cast<float>(below);
  };
  constexpr std::uint32_t kInches = 2;
  constexpr std::uint32_t kCentimeters = 3;
  const ExifTag* tag = Find(exif.picture, kResolutionUnit);
  const std::uint32_t unit = tag != nullptr && tag->bytes.size() == 2 ? NumberIn(tag->bytes, 0, 2) : 0;
  resolution = {ratio(kXResolution), ratio(kYResolution), unit == kCentimeters ? "cm" : "in"};
  return resolution.across > 0 && resolution.down > 0 && (unit == kInches || unit == kCentimeters);
}

std::string WriteExif(const Exif& exif, int width, int height) {
  Writer writer(kHeaderSize);
  const std::size_t first = writer.AddDirectory(AddOthers(exif, width, height, writer));
  using namespace std::string_literals;
  return "II*\0"s + LittleEndian(first, 4) + writer.Bytes();
}

void AddToTiff(std::vector<std::uint8_t>& file, const Exif& exif, std::string_view xmp, int width,
               int height) {
  const std::string_view bytes(reinterpret_cast<const char*>(file.data()), file.size());
  using namespace std::string_view_literals;
  if (!bytes.starts_with("II*\0"sv)) {
    return;
  }
  Writer writer(file.size());
  ExifDirectory tags;
  if (!exif.IsEmpty()) {
    tags = AddOthers(exif, width, height, writer);
  }
  if (!xmp.empty()) {
    tags.push_back({kXmp, kByte, static_cast<std::uint32_t>(xmp.size()), std::string(xmp)});
  }
  // Entries of the picture's own, as they are: their values stay where they stand.
  std::vector<std::string> entries;
  const std::size_t first = NumberIn(bytes, 4, 4);
  for (std::size_t i = 0; i < NumberIn(bytes, first, 2); ++i) {
    entries.emplace_back(bytes.substr(first + 2 + i * kEntrySize, kEntrySize));
    if (Find(tags, static_cast<std::uint16_t>(NumberIn(entries.back(), 0, 2)))) {
      entries.pop_back();
    }
  }
  std::ranges::transform(tags, std::back_inserter(entries),
                         [&](const ExifTag& tag) { return writer.Entry(tag); });
  const std::size_t place = writer.AddDirectory(std::move(entries));
  if (file.size() + writer.Bytes().size() > UINT32_MAX) {
    return;
  }
  const std::string header = LittleEndian(place, 4);
  std::ranges::copy(header, file.begin() + 4);
  file.insert(file.end(), writer.Bytes().begin(), writer.Bytes().end());
}

}  // namespace cli
