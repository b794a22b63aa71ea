#include "cli/picture/writer.h"

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <type_traits>

#include "cli/frames/sample_convert.h"
#include "cli/picture/module/extras.h"
#include "cli/report/error.h"

namespace cli {
namespace {

using minihost::Depth;
using minihost::Image;

/// Red, green, blue and, when the traits say so, alpha of every pixel in the file's way of counting.
template <class FileWay>
std::vector<typename FileWay::Sample> StraightSamples(const Image& image, const PictureTraits& traits) {
  std::vector<typename FileWay::Sample> samples;
  samples.reserve(static_cast<std::size_t>(image.Width()) * static_cast<std::size_t>(image.Height()) * 4);
  minihost::WithPixel(image.PixelDepth(), [&]<class Pixel>(Pixel) {
    for (int row = 0; row < image.Height(); ++row) {
      for (const Pixel& pixel : image.Row<Pixel>(row)) {
        samples.push_back(ConvertSample<FileWay, WayOf<Pixel>>(pixel.red));
        samples.push_back(ConvertSample<FileWay, WayOf<Pixel>>(pixel.green));
        samples.push_back(ConvertSample<FileWay, WayOf<Pixel>>(pixel.blue));
        if (traits.hasAlpha) {
          samples.push_back(ConvertSample<FileWay, WayOf<Pixel>>(pixel.alpha));
        }
      }
    }
  });
  return samples;
}

std::vector<float> PremultipliedSamples(const Image& image, const PictureTraits& traits) {
  std::vector<float> samples = StraightSamples<ToOne>(image, traits);
  if (!traits.hasAlpha) {
    return samples;
  }
  for (std::size_t first = 0; first < samples.size(); first += 4) {
    const float alpha = samples[first + 3];
    if (!(alpha > 0) && traits.clearColor == ClearColor::kLight) {
      continue;
    }
    for (std::size_t color = 0; color < 3; ++color) {
      // Not times 0: infinity would become NaN.
      samples[first + color] = alpha > 0 ? samples[first + color] * alpha : 0;
    }
  }
  return samples;
}

std::vector<std::uint8_t> SamplesOverBlack(const Image& image) {
  const std::vector<float> straight = StraightSamples<ToOne>(image, {.hasAlpha = true});
  std::vector<std::uint8_t> samples;
  samples.reserve(straight.size() / 4 * 3);
  for (std::size_t first = 0; first < straight.size(); first += 4) {
    for (std::size_t color = 0; color < 3; ++color) {
      // In double precision: whole numbers come back exactly when opaque.
      samples.push_back(FromFraction<To255>(double{straight[first + color]} * double{straight[first + 3]}));
    }
  }
  return samples;
}

/// The defaults are those of docs/tool.md, by measurement: a PNG in half the time of level 6 and hardly
/// larger, an EXR in what packs a whole picture best, or one that is mostly empty.
void SetCompression(OIIO::ImageSpec& spec, const PictureTraits& traits, FileFormat format,
                    const Compression& compression) {
  constexpr int kNoFilter = 8;
  constexpr int kUpFilter = 32;  // subtracts the pixel above
  constexpr int kDefaultLevel = 5;
  if (format == FileFormat::kPng) {
    const bool isNone = compression.name == "none";
    if (isNone || compression.level) {
      spec["png:compressionLevel"] = compression.level.value_or(0);
    } else if (compression.name != "rle") {
      spec["png:compressionLevel"] = kDefaultLevel;
      spec["png:filter"] = kUpFilter;
    } else {
      spec["compression"] = "rle";
    }
    if (isNone) {
      spec["png:filter"] = kNoFilter;
    }
    return;
  }
  std::string name = compression.name;
  if (name.empty()) {
    name = format == FileFormat::kExr && !traits.hasAlpha ? "piz" : "zip";
  }
  spec["compression"] = compression.level ? fmt::format("{}:{}", name, *compression.level) : name;
}

/// Empty for a picture that no still's file has given.
const FileExtras* ExtrasOf(const PictureTraits& traits) {
  return static_cast<const FileExtras*>(traits.extras.get());
}

/// Whether the picture has the size that it had in its EXR.
bool FitsOver(const FileExtras& extras, const Image& image) {
  return extras.isExr && extras.width == image.Width() && extras.height == image.Height();
}

OIIO::ImageSpec SpecFor(const Image& image, const PictureTraits& traits, FileFormat format,
                        const EncodingSettings& encoding, OIIO::TypeDesc type) {
  const bool isJpeg = format == FileFormat::kJpeg;
  OIIO::ImageSpec spec(image.Width(), image.Height(), traits.hasAlpha && !isJpeg ? 4 : 3, type);
  if (format != FileFormat::kExr) {
    spec["oiio:UnassociatedAlpha"] = 1;
  }
  if (traits.pixelAspect != 1) {
    spec["PixelAspectRatio"] = static_cast<float>(traits.pixelAspect);
  }
  if (!traits.iccProfile.empty() && format != FileFormat::kExr) {
    const int size = static_cast<int>(traits.iccProfile.size());
    spec.attribute("ICCProfile", OIIO::TypeDesc(OIIO::TypeDesc::UINT8, size), traits.iccProfile.data());
  }
  if (isJpeg) {
    spec["CompressionQuality"] = encoding.quality.value_or(kJpegQuality);
    spec["jpeg:subsampling"] = "4:4:4";
  } else if (encoding.compression.empty()) {
    SetCompression(spec, traits, format, {});
  } else {
    SetCompression(spec, traits, format, ParseCompression(format, encoding.compression));
  }
  if (const auto* extras = ExtrasOf(traits)) {
    for (const OIIO::ParamValue& attribute : extras->attributes) {
      if (GoesOver(attribute, format, extras->metadata) && !spec.find_attribute(attribute.name())) {
        spec.extra_attribs.push_back(attribute);
      }
    }
    if (format == FileFormat::kExr && FitsOver(*extras, image)) {
      spec.x = spec.full_x = extras->left;
      spec.y = spec.full_y = extras->top;
    }
  }
  if (spec.find_attribute("DateTime")) {
    return spec;
  }
  spec["DateTime"] = "";  // or the writer puts in the present moment, and no two runs make the same file
  return spec;
}

/// The library's name of it.
const char* NameOf(FileFormat format) {
  switch (format) {
    case FileFormat::kPng:
      return "png";
    case FileFormat::kTiff:
      return "tiff";
    case FileFormat::kExr:
      return "openexr";
    case FileFormat::kJpeg:
      break;
  }
  return "jpeg";
}

std::vector<std::uint8_t> EncodeAs(OIIO::TypeDesc type, const void* samples, OIIO::ImageSpec spec,
                                   FileFormat format) {
  std::vector<std::uint8_t> bytes;
  OIIO::Filesystem::IOVecOutput memory(bytes);
  const auto output = OIIO::ImageOutput::create(NameOf(format));
  if (!output) {
    Refuse(ExitCode::kOutput, "no encoder: {}", OIIO::geterror());
  }
  const bool done = output->set_ioproxy(&memory) && output->open(NameOf(format), spec) &&
                    output->write_image(type, samples) && output->close();
  // The TIFF writer leaves a complaint about metadata behind even when all went well, so it says nothing
  // about success; fetched here, or it goes to the terminal.
  const std::string complaint = output->geterror();
  // The PNG writer takes no profile that breaks the rules; colour without a profile beats no picture.
  if (!done && spec.find_attribute("ICCProfile")) {
    spec.erase_attribute("ICCProfile");
    return EncodeAs(type, samples, spec, format);
  }
  if (!done || bytes.empty()) {
    Refuse(ExitCode::kOutput, "cannot encode {} x {} pixels as {}: {}", spec.width, spec.height,
           NameOf(format), complaint);
  }
  return bytes;
}

template <class Sample>
std::vector<std::uint8_t> Encode(const std::vector<Sample>& samples, const OIIO::ImageSpec& spec,
                                 FileFormat format) {
  return EncodeAs(OIIO::BaseTypeFromC<Sample>::value, samples.data(), spec, format);
}

/// Over the area of the EXR that the picture comes from: around the picture the colors that stood there, or
/// nothing around snow alone.
std::vector<float> WithSurroundings(const std::vector<float>& samples, const OIIO::ImageSpec& spec,
                                    const PictureTraits& traits, const FileExtras& extras) {
  const auto colors = static_cast<std::size_t>(spec.nchannels);
  std::vector<float> whole = extras.colors;
  if (extras.colorCount != spec.nchannels || traits.isSnowAlone) {
    whole.assign(extras.area.Count() * colors, 0);
  }
  const std::size_t rowSize = static_cast<std::size_t>(spec.width) * colors;
  for (int row = 0; row < spec.height; ++row) {
    const float* from = samples.data() + static_cast<std::size_t>(row) * rowSize;
    std::copy_n(from, rowSize, whole.data() + extras.area.Find(0, row) * colors);
  }
  return whole;
}

/// With the further channels of that EXR, each in its own format.
std::vector<std::uint8_t> EncodeOver(const FileExtras& extras, const std::vector<float>& samples,
                                     OIIO::ImageSpec spec) {
  const auto colors = static_cast<std::size_t>(spec.nchannels);
  const std::size_t pixels = extras.area.Count();
  const std::size_t colorSize = colors * spec.format.size();
  const std::size_t extraSize = extras.samples.size() / pixels;
  std::vector<char> stored(pixels * colorSize);
  OIIO::convert_pixel_values(OIIO::TypeDesc::FLOAT, samples.data(), spec.format, stored.data(),
                             static_cast<int>(samples.size()));
  std::vector<char> packed(pixels * (colorSize + extraSize));
  for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
    char* to = packed.data() + pixel * (colorSize + extraSize);
    std::memcpy(to, stored.data() + pixel * colorSize, colorSize);
    std::memcpy(to + colorSize, extras.samples.data() + pixel * extraSize, extraSize);
  }
  spec.channelformats.assign(colors, spec.format);
  spec.channelformats.insert(spec.channelformats.end(), extras.formats.begin(), extras.formats.end());
  spec.channelnames.insert(spec.channelnames.end(), extras.channels.begin(), extras.channels.end());
  spec.nchannels = static_cast<int>(spec.channelnames.size());
  spec.x += extras.area.left;
  spec.y += extras.area.top;
  spec.width = extras.area.width;
  spec.height = extras.area.height;
  return EncodeAs(OIIO::TypeDesc::UNKNOWN, packed.data(), spec, FileFormat::kExr);
}

std::vector<std::uint8_t> EncodePixels(const Image& image, const PictureTraits& traits, FileFormat format,
                                       const EncodingSettings& encoding) {
  using OIIO::TypeDesc;
  const auto specFor = [&](TypeDesc type) { return SpecFor(image, traits, format, encoding, type); };
  if (format == FileFormat::kExr) {
    const bool isHalf = image.PixelDepth() == Depth::kBits8 || traits.isHalf || encoding.isHalf;
    const OIIO::ImageSpec spec = specFor(isHalf ? TypeDesc::HALF : TypeDesc::FLOAT);
    const FileExtras* extras = ExtrasOf(traits);
    const std::vector<float> samples = PremultipliedSamples(image, traits);
    if (extras == nullptr || !FitsOver(*extras, image) ||
        (extras->samples.empty() && extras->colors.empty())) {
      return Encode(samples, spec, format);
    }
    const bool hasSurroundings = !extras->colors.empty();
    return EncodeOver(*extras, hasSurroundings ? WithSurroundings(samples, spec, traits, *extras) : samples,
                      spec);
  }
  if (format == FileFormat::kJpeg) {
    return Encode(SamplesOverBlack(image), specFor(TypeDesc::UINT8), format);
  }
  if (image.PixelDepth() == Depth::kBits8) {
    return Encode(StraightSamples<To255>(image, traits), specFor(TypeDesc::UINT8), format);
  }
  if (image.PixelDepth() == Depth::kBits16 || format == FileFormat::kPng) {
    return Encode(StraightSamples<To65535>(image, traits), specFor(TypeDesc::UINT16), format);
  }
  return Encode(StraightSamples<ToOne>(image, traits), specFor(TypeDesc::FLOAT), format);
}

}  // namespace

std::vector<std::uint8_t> EncodePicture(const Image& image, const PictureTraits& traits, FileFormat format,
                                        const EncodingSettings& encoding) {
  std::vector<std::uint8_t> bytes = EncodePixels(image, traits, format, encoding);
  if (const FileExtras* extras = ExtrasOf(traits)) {
    AddMetadata(bytes, format, extras->metadata, image.Width(), image.Height());
  }
  return bytes;
}

}  // namespace cli
