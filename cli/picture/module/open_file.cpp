#include "cli/picture/module/open_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

namespace cli {
namespace {

constexpr char kStraight[] = "oiio:UnassociatedAlpha";
constexpr std::array<std::string_view, 4> kFormats = {"png", "jpeg", "tiff", "openexr"};

std::string FirstLine(const std::string& text) {
  return text.empty() ? "it is damaged or not a picture" : text.substr(0, text.find('\n'));
}

}  // namespace

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

Window FindWindow(const OIIO::ImageSpec& spec, std::string_view format) {
  if (format != "openexr") {
    return {spec.width, spec.height, 0, 0};
  }
  return {spec.full_width, spec.full_height, spec.x - spec.full_x, spec.y - spec.full_y};
}

OpenFile::OpenFile(const std::filesystem::path& path) : path_(path) {
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
  // A progressive JPEG is decoded as it is opened, and the library goes on where it is cut off.
  const std::string complaint = std::string_view(input_->format_name()) == "jpeg" ? input_->geterror() : "";
  for (const char* damage : {"Premature end", "Corrupt JPEG data"}) {
    if (complaint.find(damage) != std::string::npos) {
      RefuseInput(path, FirstLine(complaint));
    }
  }
  if (Spec().deep) {
    RefuseInput(path, "it holds deep pixels; flatten it first");
  }
}

bool OpenFile::IsStraight() const {
  // The request is granted where the file holds it, and then repeated here.
  return Spec().get_int_attribute(kStraight, 0) != 0;
}

int OpenFile::CountFurtherParts() {
  constexpr int kMostCounted = 1000;
  int count = 0;
  while (count < kMostCounted && input_->seek_subimage(count + 1, 0)) {
    ++count;
  }
  input_->seek_subimage(0, 0);
  input_->geterror();
  return count;
}

std::vector<char> OpenFile::ReadChannel(int channel) {
  const OIIO::TypeDesc format = Spec().channelformat(channel);
  std::vector<char> samples(Spec().image_pixels() * format.size());
  if (!input_->read_image(0, 0, channel, channel + 1, format, samples.data())) {
    RefuseInput(path_, FirstLine(input_->geterror()));
  }
  return samples;
}

void OpenFile::ReadAll(OIIO::TypeDesc type, void* samples) {
  input_->geterror();  // forget complaints about metadata
  const bool done = input_->read_image(0, 0, 0, Spec().nchannels, type, samples);
  // Of damage in the middle some readers tell here only, and go on.
  const std::string complaint = input_->geterror();
  if (!done || !complaint.empty()) {
    RefuseInput(path_, FirstLine(complaint));
  }
}

}  // namespace cli
