#include "cli/picture/module/extras_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

#include "cli/picture/module/extras.h"

namespace cli {
namespace {

/// The picture and what is stored around it, or the picture alone when that is too far away.
Area AreaOf(const OIIO::ImageSpec& spec) {
  const std::int64_t storedLeft = std::int64_t{spec.x} - spec.full_x;
  const std::int64_t storedTop = std::int64_t{spec.y} - spec.full_y;
  const std::int64_t left = std::min<std::int64_t>(0, storedLeft);
  const std::int64_t top = std::min<std::int64_t>(0, storedTop);
  const std::int64_t width = std::max<std::int64_t>(spec.full_width, storedLeft + spec.width) - left;
  const std::int64_t height = std::max<std::int64_t>(spec.full_height, storedTop + spec.height) - top;
  if (std::max(width, height) > minihost::Image::kMaxSide) {
    return {0, 0, spec.full_width, spec.full_height};
  }
  return {static_cast<int>(left), static_cast<int>(top), static_cast<int>(width), static_cast<int>(height)};
}

/// Calls `put(from, to)` for each pixel that is stored and in the area, with its number in either.
template <class Put>
void ForEachStored(const OIIO::ImageSpec& spec, const Area& area, Put&& put) {
  const int left = spec.x - spec.full_x;
  const int top = spec.y - spec.full_y;
  const std::int64_t lastRow =
      std::min<std::int64_t>(std::int64_t{top} + spec.height, area.top + area.height);
  const std::int64_t lastColumn =
      std::min<std::int64_t>(std::int64_t{left} + spec.width, area.left + area.width);
  const Area stored{left, top, spec.width, spec.height};
  for (int row = std::max(top, area.top); row < lastRow; ++row) {
    for (int column = std::max(left, area.left); column < lastColumn; ++column) {
      put(stored.Find(column, row), area.Find(column, row));
    }
  }
}

void ReadFurtherChannels(OpenFile& file, FileExtras& extras) {
  const OIIO::ImageSpec& spec = file.Spec();
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
  extras.samples.resize(extras.area.Count() * pixelSize);
  std::size_t offset = 0;
  for (const int channel : channels) {
    const std::vector<char> stored = file.ReadChannel(channel);
    const std::size_t size = spec.channelformat(channel).size();
    ForEachStored(spec, extras.area, [&](std::size_t from, std::size_t to) {
      std::memcpy(extras.samples.data() + to * pixelSize + offset, stored.data() + from * size, size);
    });
    offset += size;
  }
}

void ReadColors(OpenFile& file, FileExtras& extras) {
  const OIIO::ImageSpec& spec = file.Spec();
  const Channels known = FindChannels(spec);
  const auto stored = file.ReadSamples<float>();
  extras.colorCount = known.alpha < 0 ? 3 : 4;
  const auto count = static_cast<std::size_t>(extras.colorCount);
  extras.colors.resize(extras.area.Count() * count);
  ForEachStored(spec, extras.area, [&](std::size_t from, std::size_t to) {
    const float* pixel = stored.data() + from * static_cast<std::size_t>(spec.nchannels);
    const int order[] = {known.red, known.green, known.blue, known.alpha};
    for (std::size_t color = 0; color < count; ++color) {
      extras.colors[to * count + color] = pixel[order[color]];
    }
  });
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
  extras->bits = spec.get_int_attribute("oiio:BitsPerSample", static_cast<int>(spec.format.size()) * 8);
  say("samples", fmt::format("{}, {} bits", spec.format.c_str(), extras->bits));
  if (const auto compression = spec.get_string_attribute("compression"); !compression.empty()) {
    say("compression", compression);
  }
  if (spec.find_attribute("ICCProfile")) {
    extras->blocks.emplace_back("ICC profile");
    say("ICC profile", spec.get_string_attribute("ICCProfile:profile_description", "without a name"));
  }
  if (extras->isExr) {
    extras->left = spec.full_x;
    extras->top = spec.full_y;
    say("display window", WindowText(spec.full_width, spec.full_height, spec.full_x, spec.full_y));
    say("data window", WindowText(spec.width, spec.height, spec.x, spec.y));
    extras->area = AreaOf(spec);
    const Area& area = extras->area;
    const bool hasOverscan = area.width > spec.full_width || area.height > spec.full_height;
    if (hasOverscan) {
      extras->leftOut.push_back(
          "what lies outside of the display window (overscan) gets no snow, and only an .exr of full size "
          "keeps it");
      ReadColors(file, *extras);
    }
  }
  if (!extras->metadata.IsEmpty()) {
    const Metadata& metadata = extras->metadata;
    if (!metadata.exif.IsEmpty()) {
      extras->blocks.emplace_back("EXIF");
    }
    if (!metadata.xmp.empty()) {
      extras->blocks.emplace_back("XMP");
    }
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
