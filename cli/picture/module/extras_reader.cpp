#include "cli/picture/module/extras_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "cli/picture/module/extras.h"

namespace cli {
namespace {

/// What lies over the picture, pixel by pixel; the rest is 0.
void ReadFurtherChannels(OpenFile& file, FileExtras& extras) {
  const OIIO::ImageSpec& spec = file.Spec();
  const Window window = FindWindow(spec, file.Format());
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
    const std::vector<char> stored = file.ReadChannel(channel);
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

}  // namespace

std::shared_ptr<const PictureExtras> ReadExtras(OpenFile& file) {
  auto extras = std::make_shared<FileExtras>();
  const OIIO::ImageSpec spec = file.Spec();
  extras->isExr = file.Format() == "openexr";
  if (!extras->isExr) {
    extras->metadata = ReadMetadata(file.Path());
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
  if (const int parts = file.CountFurtherParts(); parts > 0) {
    say("parts", std::to_string(parts + 1));
    extras->leftOut.push_back(fmt::format("only the first of the file's {} parts is read", parts + 1));
  }
  ReadFurtherChannels(file, *extras);
  return extras;
}

}  // namespace cli
