#include "cli/picture/reader.h"

#include <OpenImageIO/imageio.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>

#include "cli/frames/orientation.h"
#include "cli/frames/sample_convert.h"
#include "cli/picture/module/extras.h"
#include "cli/report/error.h"

namespace cli {
namespace {

using minihost::Depth;
using minihost::Image;

constexpr char kStraight[] = "oiio:UnassociatedAlpha";
constexpr std::array<std::string_view, 4> kFormats = {"png", "jpeg", "tiff", "openexr"};

/// Where a file's channels are; -1 is none.
struct Channels {
  int red;
  int green;
  int blue;
  int alpha;
};

Channels FindChannels(const OIIO::ImageSpec& spec) {
  const int alpha = spec.nchannels > 1 ? spec.alpha_channel : -1;
  const int red = spec.channelindex("R");
  const int green = spec.channelindex("G");
  const int blue = spec.channelindex("B");
  if (red >= 0 && green >= 0 && blue >= 0) {
    return {red, green, blue, alpha};
  }
  std::array<int, 3> colors{};
  int found = 0;
  for (int channel = 0; channel < spec.nchannels && found < 3; ++channel) {
    if (channel != alpha) {
      colors[static_cast<std::size_t>(found++)] = channel;
    }
  }
  if (found < 3) {
    return {colors[0], colors[0], colors[0], alpha};
  }
  return {colors[0], colors[1], colors[2], alpha};
}

Depth DepthOfFile(const OIIO::ImageSpec& spec) {
  switch (spec.format.basetype) {
    case OIIO::TypeDesc::UINT8:
    case OIIO::TypeDesc::INT8:
      return Depth::kBits8;
    case OIIO::TypeDesc::UINT16:
    case OIIO::TypeDesc::INT16:
      return Depth::kBits16;
    default:
      return Depth::kFloat;
  }
}

/// Where the stored pixels lie in the picture.
struct Window {
  int width;
  int height;
  int left;  // of the first stored column, in the picture
  int top;

  bool IsCovered(const OIIO::ImageSpec& stored) const {
    return left <= 0 && top <= 0 && left + stored.width >= width && top + stored.height >= height;
  }
};

Window FindWindow(const OIIO::ImageSpec& spec, std::string_view format) {
  if (format != "openexr") {
    return {spec.width, spec.height, 0, 0};
  }
  return {spec.full_width, spec.full_height, spec.x - spec.full_x, spec.y - spec.full_y};
}

/// How the samples of a file count.
template <class Sample>
using FileWayOf =
    std::conditional_t<std::is_same_v<Sample, std::uint8_t>, To255,
                       std::conditional_t<std::is_same_v<Sample, std::uint16_t>, To65535, ToOne>>;

template <class Pixel, class Sample>
Pixel ConvertPixel(const Sample* samples, const Channels& channels) {
  using To = WayOf<Pixel>;
  using From = FileWayOf<Sample>;
  Pixel pixel;
  pixel.alpha =
      channels.alpha < 0 ? ConvertSample<To, ToOne>(1) : ConvertSample<To, From>(samples[channels.alpha]);
  pixel.red = ConvertSample<To, From>(samples[channels.red]);
  pixel.green = ConvertSample<To, From>(samples[channels.green]);
  pixel.blue = ConvertSample<To, From>(samples[channels.blue]);
  return pixel;
}

/// Divides the colour of every pixel by its alpha, unless alpha is 0 or below.
void MakeStraight(std::vector<float>& samples, const OIIO::ImageSpec& spec, const Channels& channels) {
  const auto stride = static_cast<std::size_t>(spec.nchannels);
  for (std::size_t first = 0; first < samples.size(); first += stride) {
    float* pixel = samples.data() + first;
    const float alpha = pixel[channels.alpha];
    if (!(alpha > 0)) {
      continue;
    }
    pixel[channels.red] /= alpha;
    // Grey has its one channel under three names.
    if (channels.green != channels.red) {
      pixel[channels.green] /= alpha;
    }
    if (channels.blue != channels.red) {
      pixel[channels.blue] /= alpha;
    }
  }
}

/// One open file.
class Source {
 public:
  explicit Source(const std::filesystem::path& path) : path_(path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status)) {
      RefuseInput(path, error ? error.message() : "no such file");
    }
    if (std::filesystem::is_directory(status)) {
      RefuseInput(path, "it is a folder");
    }
    if (!std::filesystem::is_regular_file(status)) {
      RefuseInput(path, "it is not a regular file");
    }
    // The library's own words for a file that may not be read are those for a damaged one.
    if (const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC); file < 0) {
      RefuseInput(path, std::generic_category().message(errno));
    } else {
      ::close(file);
    }
    OIIO::ImageSpec wish;
    wish[kStraight] = 1;
    input_ = OIIO::ImageInput::open(path.string(), &wish);
    if (!input_) {
      RefuseInput(path, FirstLine(OIIO::geterror()));
    }
    if (std::find(kFormats.begin(), kFormats.end(), input_->format_name()) == kFormats.end()) {
      RefuseInput(path, fmt::format("it is of the format '{}'; PNG, JPEG, TIFF and EXR are read",
                                    input_->format_name()));
    }
    if (Spec().deep) {
      RefuseInput(path, "it holds deep pixels; flatten it first");
    }
  }

  const OIIO::ImageSpec& Spec() const { return input_->spec(); }
  /// Pictures after the first: further parts, pages.
  int CountFurtherParts() {
    constexpr int kMostCounted = 1000;
    int count = 0;
    while (count < kMostCounted && input_->seek_subimage(count + 1, 0)) {
      ++count;
    }
    input_->seek_subimage(0, 0);
    input_->geterror();
    return count;
  }

  std::string_view Format() const { return input_->format_name(); }
  const std::filesystem::path& Path() const { return path_; }

  /// One channel as it is stored.
  std::vector<char> ReadChannel(int channel) {
    const OIIO::TypeDesc format = Spec().channelformat(channel);
    std::vector<char> samples(Spec().image_pixels() * format.size());
    if (!input_->read_image(0, 0, channel, channel + 1, format, samples.data())) {
      RefuseInput(path_, FirstLine(input_->geterror()));
    }
    return samples;
  }

  template <class Sample>
  std::vector<Sample> ReadSamples() {
    const OIIO::ImageSpec& spec = Spec();
    std::vector<Sample> samples(spec.image_pixels() * static_cast<std::size_t>(spec.nchannels));
    input_->geterror();  // forget complaints about metadata
    const bool done =
        input_->read_image(0, 0, 0, spec.nchannels, OIIO::BaseTypeFromC<Sample>::value, samples.data());
    // Of damage in the middle some readers tell here only, and go on.
    const std::string complaint = input_->geterror();
    if (!done || !complaint.empty()) {
      RefuseInput(path_, FirstLine(complaint));
    }
    return samples;
  }

 private:
  static std::string FirstLine(const std::string& text) {
    return text.empty() ? "it is damaged or not a picture" : text.substr(0, text.find('\n'));
  }

  std::filesystem::path path_;
  std::unique_ptr<OIIO::ImageInput> input_;
};

/// The picture from all of its file's samples.
template <class Sample>
Image Arrange(const std::vector<Sample>& samples, const Source& source, Depth depth) {
  const OIIO::ImageSpec& spec = source.Spec();
  const Channels channels = FindChannels(spec);
  const Window window = FindWindow(spec, source.Format());
  const Orientation orientation(spec.get_int_attribute("Orientation", 1), {window.width, window.height});
  const auto [width, height] = orientation.Upright();
  Image image(width, height, depth);
  minihost::WithPixel(depth, [&]<class Pixel>(Pixel) {
    if (channels.alpha < 0 && !window.IsCovered(spec)) {
      const std::array<Sample, 3> black{};
      for (int row = 0; row < image.Height(); ++row) {
        std::ranges::fill(image.Row<Pixel>(row), ConvertPixel<Pixel>(black.data(), {0, 1, 2, -1}));
      }
    }
    const int firstRow = std::max(0, -window.top);
    const int lastRow = std::min(spec.height, window.height - window.top);
    const int firstColumn = std::max(0, -window.left);
    const int lastColumn = std::min(spec.width, window.width - window.left);
    for (int row = firstRow; row < lastRow; ++row) {
      const Sample* stored = samples.data() + static_cast<std::size_t>(row) *
                                                  static_cast<std::size_t>(spec.width) *
                                                  static_cast<std::size_t>(spec.nchannels);
      for (int column = firstColumn; column < lastColumn; ++column) {
        const auto place = orientation.Find(column + window.left, row + window.top);
        image.Row<Pixel>(place.row)[static_cast<std::size_t>(place.column)] =
            ConvertPixel<Pixel>(stored + static_cast<std::ptrdiff_t>(column) * spec.nchannels, channels);
      }
    }
  });
  return image;
}

Image ReadPixels(Source& source, Depth depth, ClearColor clearColor) {
  if (clearColor == ClearColor::kLight) {
    auto samples = source.ReadSamples<float>();
    MakeStraight(samples, source.Spec(), FindChannels(source.Spec()));
    return Arrange(samples, source, depth);
  }
  switch (DepthOfFile(source.Spec())) {
    case Depth::kBits8:
      return Arrange(source.ReadSamples<std::uint8_t>(), source, depth);
    case Depth::kBits16:
      return Arrange(source.ReadSamples<std::uint16_t>(), source, depth);
    default:
      return Arrange(source.ReadSamples<float>(), source, depth);
  }
}

/// The colour profile, when it is one of RGB colour: any other would not fit what becomes of the picture.
std::vector<std::uint8_t> ReadProfile(const OIIO::ImageSpec& spec) {
  constexpr std::size_t kColorSpaceAt = 16;
  constexpr std::size_t kHeaderSize = 128;
  const OIIO::ParamValue* profile = spec.find_attribute("ICCProfile");
  if (!profile || static_cast<std::size_t>(profile->datasize()) < kHeaderSize) {
    return {};
  }
  const auto* bytes = static_cast<const std::uint8_t*>(profile->data());
  if (std::memcmp(bytes + kColorSpaceAt, "RGB ", 4) != 0) {
    return {};
  }
  return {bytes, bytes + profile->datasize()};
}

double ReadPixelAspect(const OIIO::ImageSpec& spec) {
  const double stored = PlausibleAspect(spec.get_float_attribute("PixelAspectRatio", 1));
  return Orientation(spec.get_int_attribute("Orientation", 1), {}).UprightAspect(stored);
}

/// What lies over the picture, pixel by pixel; the rest is 0.
void ReadFurtherChannels(Source& source, FileExtras& extras) {
  const OIIO::ImageSpec& spec = source.Spec();
  const Window window = FindWindow(spec, source.Format());
  const Channels known = FindChannels(spec);
  std::vector<int> channels;
  std::size_t pixelSize = 0;
  for (int channel = 0; channel < spec.nchannels; ++channel) {
    if (channel != known.red && channel != known.green && channel != known.blue && channel != known.alpha) {
      channels.push_back(channel);
      extras.channels.push_back(spec.channel_name(channel));
      extras.formats.push_back(spec.channelformat(channel));
      pixelSize += spec.channelformat(channel).size();
    }
  }
  if (!extras.isExr || channels.empty()) {
    return;
  }
  extras.samples.resize(static_cast<std::size_t>(window.width) * static_cast<std::size_t>(window.height) *
                        pixelSize);
  std::size_t offset = 0;
  for (const int channel : channels) {
    const std::vector<char> stored = source.ReadChannel(channel);
    const std::size_t size = spec.channelformat(channel).size();
    for (int row = std::max(0, -window.top); row < std::min(spec.height, window.height - window.top); ++row) {
      for (int column = std::max(0, -window.left); column < std::min(spec.width, window.width - window.left);
           ++column) {
        const std::size_t from = static_cast<std::size_t>(row) * static_cast<std::size_t>(spec.width) +
                                 static_cast<std::size_t>(column);
        const std::size_t to =
            static_cast<std::size_t>(row + window.top) * static_cast<std::size_t>(window.width) +
            static_cast<std::size_t>(column + window.left);
        std::memcpy(extras.samples.data() + to * pixelSize + offset, stored.data() + from * size, size);
      }
    }
    offset += size;
  }
}

std::string WindowText(int width, int height, int left, int top) {
  return fmt::format("{} x {} at {},{}", width, height, left, top);
}

std::shared_ptr<const PictureExtras> ReadExtras(Source& source) {
  auto extras = std::make_shared<FileExtras>();
  const OIIO::ImageSpec spec = source.Spec();
  extras->isExr = source.Format() == "openexr";
  if (!extras->isExr) {
    extras->metadata = ReadMetadata(source.Path());
  }
  extras->attributes = AttributesOf(spec, extras->metadata);
  extras->width = spec.full_width;
  extras->height = spec.full_height;
  const auto say = [&](const char* name, std::string value) {
    extras->facts.emplace_back(name, std::move(value));
  };
  say("channels", fmt::format("{}", fmt::join(spec.channelnames, ", ")));
  say("samples",
      fmt::format("{}, {} bits", spec.format.c_str(),
                  spec.get_int_attribute("oiio:BitsPerSample", static_cast<int>(spec.format.size()) * 8)));
  if (const auto compression = spec.get_string_attribute("compression"); !compression.empty()) {
    say("compression", compression);
  }
  if (spec.find_attribute("ICCProfile")) {
    say("ICC profile", spec.get_string_attribute("ICCProfile:profile_description", "without a name"));
  }
  if (extras->isExr) {
    extras->left = spec.full_x;
    extras->top = spec.full_y;
    say("display window", WindowText(spec.full_width, spec.full_height, spec.full_x, spec.full_y));
    say("data window", WindowText(spec.width, spec.height, spec.x, spec.y));
    if (spec.x < spec.full_x || spec.y < spec.full_y || spec.x + spec.width > spec.full_x + spec.full_width ||
        spec.y + spec.height > spec.full_y + spec.full_height) {
      extras->leftOut.push_back("what lies outside of the display window (overscan) is left out");
    }
  }
  if (!extras->metadata.IsEmpty()) {
    const Metadata& metadata = extras->metadata;
    say("metadata", metadata.exif.IsEmpty() ? "XMP" : metadata.xmp.empty() ? "EXIF" : "EXIF, XMP");
  }
  if (const int parts = source.CountFurtherParts(); parts > 0) {
    say("parts", std::to_string(parts + 1));
    extras->leftOut.push_back(fmt::format("only the first of the file's {} parts is read", parts + 1));
  }
  ReadFurtherChannels(source, *extras);
  return extras;
}

}  // namespace

Picture ReadPicture(const std::filesystem::path& path, std::optional<Depth> depth) {
  Source source(path);
  const OIIO::ImageSpec& spec = source.Spec();
  const int side = std::max({spec.width, spec.height, spec.full_width, spec.full_height});
  if (side > Image::kMaxSide) {
    RefuseInput(
        path, fmt::format("it is {} pixels long; at most {} a side can be drawn on", side, Image::kMaxSide));
  }
  PictureTraits traits;
  const Channels channels = FindChannels(spec);
  traits.hasAlpha = channels.alpha >= 0;
  traits.isHalf = !depth && spec.channelformat(channels.red) == OIIO::TypeDesc::HALF;
  // The request for straight colour is granted where the file holds it, and then repeated here.
  const bool straight = spec.get_int_attribute(kStraight, 0) != 0;
  traits.clearColor = traits.hasAlpha && !straight ? ClearColor::kLight : ClearColor::kHidden;
  traits.pixelAspect = ReadPixelAspect(spec);
  traits.iccProfile = ReadProfile(spec);
  try {
    traits.extras = ReadExtras(source);
    return {ReadPixels(source, depth.value_or(DepthOfFile(spec)), traits.clearColor), std::move(traits)};
  } catch (const std::bad_alloc&) {
    RefuseInput(path, fmt::format("there is no memory for {} x {} pixels", spec.width, spec.height));
  }
}

}  // namespace cli
