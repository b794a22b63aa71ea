#include "cli/picture/still_source.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <utility>

#include "cli/file/output_name.h"
#include "cli/picture/reader.h"
#include "cli/report/error.h"

namespace cli {
namespace {

SourceTraits TraitsOf(const Picture& picture) {
  SourceTraits traits;
  traits.width = picture.image.Width();
  traits.height = picture.image.Height();
  traits.depth = picture.image.PixelDepth();
  traits.pixelAspect = picture.traits.pixelAspect;
  traits.hasAlpha = picture.traits.hasAlpha;
  traits.extras = picture.traits.extras;
  return traits;
}

/// The name with a run of `@` as the printf place that means the same.
std::filesystem::path WithoutAtSigns(const std::filesystem::path& path) {
  std::string name = path.filename().string();
  const std::size_t begin = name.find('@');
  if (begin == std::string::npos || OutputName(path).IsPattern()) {
    return path;
  }
  const std::size_t end = std::min(name.find_first_not_of('@', begin), name.size());
  name.replace(begin, end - begin, fmt::format("%0{}d", end - begin));
  return path.parent_path() / name;
}

}  // namespace

StillSource::StillSource(Picture picture) : picture_(std::move(picture)), traits_(TraitsOf(picture_)) {}

std::optional<Picture> StillSource::Read(std::int32_t) {
  return Picture{picture_.image.Clone(), picture_.traits};
}

bool IsSequenceName(const std::filesystem::path& path) {
  return path.has_filename() && OutputName(WithoutAtSigns(path)).IsPattern();
}

SequenceSource::SequenceSource(const std::filesystem::path& path, std::optional<minihost::Depth> depth) {
  const OutputName pattern(WithoutAtSigns(path));
  const auto folder = path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    if (const auto number = pattern.FrameOf(name)) {
      files_[*number] = path.parent_path() / name;
    }
  }
  if (files_.empty()) {
    RefuseInput(path, error ? error.message()
                            : fmt::format("there is no file such as '{}'", pattern.ForFrame(1).string()));
  }
  const Picture first = ReadPicture(files_.begin()->second, depth);
  traits_ = TraitsOf(first);
  isHalf_ = first.traits.isHalf;
  traits_.firstFrame = files_.begin()->first;
  traits_.lastFrame = files_.rbegin()->first;
}

std::optional<Picture> SequenceSource::Read(std::int32_t frame) {
  const auto file = files_.find(frame);
  if (file == files_.end()) {
    return {};
  }
  Picture picture = ReadPicture(file->second, traits_.depth);
  picture.traits.isHalf = isHalf_;
  if (picture.image.Width() == traits_.width && picture.image.Height() == traits_.height) {
    return picture;
  }
  Refuse(ExitCode::kInput, "'{}' is {} x {} pixels, but '{}' is {} x {}; all frames need one size",
         file->second.string(), picture.image.Width(), picture.image.Height(),
         files_.begin()->second.string(), traits_.width, traits_.height);
}

std::filesystem::path SequenceSource::FileOf(std::int32_t frame) const {
  const auto file = files_.find(frame);
  return file == files_.end() ? std::filesystem::path() : file->second;
}

std::vector<std::int32_t> SequenceSource::Missing() const {
  std::vector<std::int32_t> missing;
  std::int64_t expected = files_.begin()->first;
  for (const auto& [number, path] : files_) {
    for (; expected < number; ++expected) {
      missing.push_back(static_cast<std::int32_t>(expected));
    }
    ++expected;
  }
  return missing;
}

}  // namespace cli
