#include "cli/picture/reader.h"

#include <OpenImageIO/imageio.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>

#include "cli/frames/orientation.h"
#include "cli/frames/sample_convert.h"
#include "cli/picture/module/extras_reader.h"
#include "cli/picture/module/open_file.h"
#include "cli/report/error.h"

namespace cli {
namespace {

using minihost::Depth;
using minihost::Image;

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

/// The picture from all of its file's samples.
template <class Sample>
Image Arrange(const std::vector<Sample>& samples, const OpenFile& file, Depth depth) {
  const OIIO::ImageSpec& spec = file.Spec();
  const Channels channels = FindChannels(spec);
  const Window window = FindWindow(spec, file.Format());
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

Image ReadPixels(OpenFile& file, Depth depth, ClearColor clearColor) {
  if (clearColor == ClearColor::kLight) {
    auto samples = file.ReadSamples<float>();
    MakeStraight(samples, file.Spec(), FindChannels(file.Spec()));
    return Arrange(samples, file, depth);
  }
  switch (DepthOfFile(file.Spec())) {
    case Depth::kBits8:
      return Arrange(file.ReadSamples<std::uint8_t>(), file, depth);
    case Depth::kBits16:
      return Arrange(file.ReadSamples<std::uint16_t>(), file, depth);
    default:
      return Arrange(file.ReadSamples<float>(), file, depth);
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

}  // namespace

Picture ReadPicture(const std::filesystem::path& path, std::optional<Depth> depth) {
  OpenFile file(path);
  const OIIO::ImageSpec& spec = file.Spec();
  const int side = std::max({spec.width, spec.height, spec.full_width, spec.full_height});
  if (side > Image::kMaxSide) {
    RefuseInput(
        path, fmt::format("it is {} pixels long; at most {} a side can be drawn on", side, Image::kMaxSide));
  }
  PictureTraits traits;
  const Channels channels = FindChannels(spec);
  traits.hasAlpha = channels.alpha >= 0;
  traits.isHalf = !depth && spec.channelformat(channels.red) == OIIO::TypeDesc::HALF;
  const bool straight = file.IsStraight();
  traits.clearColor = traits.hasAlpha && !straight ? ClearColor::kLight : ClearColor::kHidden;
  traits.pixelAspect = ReadPixelAspect(spec);
  traits.iccProfile = ReadProfile(spec);
  try {
    traits.extras = ReadExtras(file);
    return {ReadPixels(file, depth.value_or(DepthOfFile(spec)), traits.clearColor), std::move(traits)};
  } catch (const std::bad_alloc&) {
    RefuseInput(path, fmt::format("there is no memory for {} x {} pixels", spec.width, spec.height));
  }
}

}  // namespace cli
