// One picture file, open, and where its channels and pixels belong.
#pragma once

#include <OpenImageIO/imageio.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cli/report/error.h"

namespace cli {

/// Where a file's channels are; -1 is none.
struct Channels {
  int red;
  int green;
  int blue;
  int alpha;
};

Channels FindChannels(const OIIO::ImageSpec& spec);

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

Window FindWindow(const OIIO::ImageSpec& spec, std::string_view format);

/// Straight colour stays straight.  Whatever goes wrong is a ToolError(kInput) that names the file.
class OpenFile {
 public:
  /// Refuses what is not a PNG, JPEG, TIFF or EXR of flat pixels.
  explicit OpenFile(const std::filesystem::path& path);

  const OIIO::ImageSpec& Spec() const { return input_->spec(); }
  std::string_view Format() const { return input_->format_name(); }
  const std::filesystem::path& Path() const { return path_; }

  /// Whether the file says that its colour is straight.
  bool IsStraight() const;

  /// Pictures after the first: further parts, pages.
  int CountFurtherParts();

  /// One channel as it is stored.
  std::vector<char> ReadChannel(int channel);

  /// All channels of each pixel.
  template <class Sample>
  std::vector<Sample> ReadSamples() {
    std::vector<Sample> samples(Spec().image_pixels() * static_cast<std::size_t>(Spec().nchannels));
    ReadAll(OIIO::BaseTypeFromC<Sample>::value, samples.data());
    return samples;
  }

 private:
  void ReadAll(OIIO::TypeDesc type, void* samples);

  std::filesystem::path path_;
  std::unique_ptr<OIIO::ImageInput> input_;
};

}  // namespace cli
