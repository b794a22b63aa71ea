// Random pictures, and files as other programs write and read them.
#pragma once

#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <stdexcept>
#include <vector>

#include "cli/file/pending_file.h"
#include "cli/picture/writer.h"
#include "minihost/picture/image.h"

constexpr double WhiteOf(minihost::Depth depth) {
  return depth == minihost::Depth::kBits8 ? 255 : depth == minihost::Depth::kBits16 ? 32768 : 1;
}

enum class Alpha { kOpaque, kAny };

/// Random pixels that meet black, white, wholly transparent and opaque.
inline minihost::Image RandomImage(int width, int height, minihost::Depth depth, Alpha alpha) {
  std::mt19937 random(7);
  minihost::Image image(width, height, depth);
  minihost::WithPixel(depth, [&]<class Pixel>(Pixel) {
    using Channel = decltype(Pixel::red);
    const auto channel = [&]() -> Channel {
      const unsigned kind = random() % 8;
      const double value = kind == 0 ? 0 : kind == 1 ? 1 : static_cast<double>(random() % 65536) / 65535;
      return static_cast<Channel>(value * WhiteOf(depth));
    };
    for (int row = 0; row < height; ++row) {
      for (Pixel& pixel : image.Row<Pixel>(row)) {
        pixel = {channel(), channel(), channel(), channel()};
        if (alpha == Alpha::kOpaque) {
          pixel.alpha = static_cast<Channel>(WhiteOf(depth));
        }
      }
    }
  });
  return image;
}

/// One channel after the other, as numbers.
inline std::vector<double> Channels(const minihost::Image& image) {
  std::vector<double> channels;
  minihost::WithPixel(image.PixelDepth(), [&]<class Pixel>(Pixel) {
    for (int row = 0; row < image.Height(); ++row) {
      for (const Pixel& pixel : image.Row<Pixel>(row)) {
        for (const auto channel : {pixel.alpha, pixel.red, pixel.green, pixel.blue}) {
          channels.push_back(static_cast<double>(channel));
        }
      }
    }
  });
  return channels;
}

inline void Write(const std::filesystem::path& path, const minihost::Image& image,
                  const cli::PictureTraits& traits) {
  cli::WriteWhole(path, cli::EncodePicture(image, traits, cli::FormatOf(path)));
}

/// A file as another program would write it: `samples` as they are, in a file of `spec`.
template <class Sample>
void WriteForeign(const std::filesystem::path& path, const OIIO::ImageSpec& spec,
                  const std::vector<Sample>& samples) {
  const auto output = OIIO::ImageOutput::create(path.string());
  ASSERT_TRUE(output && output->open(path.string(), spec)) << OIIO::geterror();
  ASSERT_TRUE(output->write_image(OIIO::BaseTypeFromC<Sample>::value, samples.data()));
  ASSERT_TRUE(output->close());
  output->geterror();
}

struct Stored {
  OIIO::ImageSpec spec;
  std::vector<float> samples;
};

/// What is in a file, straight alpha left straight.
inline Stored ReadStored(const std::filesystem::path& path) {
  OIIO::ImageSpec wish;
  wish["oiio:UnassociatedAlpha"] = 1;
  const auto input = OIIO::ImageInput::open(path.string(), &wish);
  if (!input) {
    throw std::runtime_error(OIIO::geterror());
  }
  Stored stored{input->spec(), std::vector<float>(input->spec().image_pixels() *
                                                  static_cast<std::size_t>(input->spec().nchannels))};
  input->read_image(0, 0, 0, stored.spec.nchannels, OIIO::TypeDesc::FLOAT, stored.samples.data());
  return stored;
}
