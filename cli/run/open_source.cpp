#include "cli/run/open_source.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>

#include "cli/file/extension.h"
#include "cli/picture/reader.h"
#include "cli/picture/still_source.h"
#include "cli/report/error.h"

namespace cli {
namespace {

/// Whether the file begins like a PNG, JPEG, TIFF or EXR, or cannot be opened: the reader of pictures has the
/// words for that.
bool LooksLikePicture(const std::filesystem::path& path) {
  using namespace std::string_view_literals;
  constexpr std::array kBeginnings = {"\x89PNG"sv,  "\xff\xd8\xff"sv, "II*\0"sv,           "MM\0*"sv,
                                      "II\x2b\0"sv, "MM\0\x2b"sv,     "\x76\x2f\x31\x01"sv};
  std::array<char, 4> bytes{};
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    return true;
  }
  file.read(bytes.data(), bytes.size());
  const std::string_view start(bytes.data(), static_cast<std::size_t>(file.gcount()));
  return std::ranges::any_of(kBeginnings, [&](auto beginning) { return start.starts_with(beginning); });
}

bool IsNamedLikePicture(const std::filesystem::path& path) {
  constexpr std::array kExtensions = {".png", ".jpg", ".jpeg", ".tif", ".tiff", ".exr"};
  return std::ranges::find(kExtensions, LowerExtension(path)) != kExtensions.end();
}

/// "5, 7-9", cut where it gets long.
std::string RangesOf(const std::vector<std::int32_t>& numbers) {
  constexpr std::size_t kMostShown = 60;  // letters
  std::string text;
  for (std::size_t i = 0; i < numbers.size();) {
    std::size_t last = i;
    while (last + 1 < numbers.size() && numbers[last + 1] == numbers[last] + 1) {
      ++last;
    }
    if (text.size() > kMostShown) {
      return text + ", ...";
    }
    text += fmt::format("{}{}", text.empty() ? "" : ", ", numbers[i]);
    if (last > i) {
      text += fmt::format("-{}", numbers[last]);
    }
    i = last + 1;
  }
  return text;
}

void NoteWhatIsLeftOut(OpenedSource& opened) {
  if (const auto& extras = opened.frames->Traits().extras) {
    opened.notes.insert(opened.notes.end(), extras->leftOut.begin(), extras->leftOut.end());
  }
}

OpenedSource OpenSequence(const std::filesystem::path& path, const InputSettings& settings) {
  auto sequence = std::make_unique<SequenceSource>(path, settings.depth);
  OpenedSource opened;
  if (const auto missing = sequence->Missing(); !missing.empty()) {
    opened.notes.push_back(
        fmt::format("{} of '{} missing: {}",
                    missing.size() == 1 ? std::string("1 frame") : fmt::format("{} frames", missing.size()),
                    path.string() + (missing.size() == 1 ? "' is" : "' are"), RangesOf(missing)));
  }
  opened.frames = std::move(sequence);
  NoteWhatIsLeftOut(opened);
  return opened;
}

OpenedSource OpenClip(const std::filesystem::path& path, const InputSettings& settings) {
  auto video =
      OpenVideo(path, {.depth = settings.depth, .alpha = settings.videoAlpha, .retimed = settings.retimed});
  OpenedSource opened;
  opened.notes = video->Notes();
  if (video->IsStill()) {
    opened.frames = std::make_unique<StillSource>(video->Read(0).value());
  } else {
    opened.video = video.get();
    opened.frames = std::move(video);
  }
  return opened;
}

}  // namespace

OpenedSource OpenSource(const std::filesystem::path& path, const InputSettings& settings) {
  std::error_code error;
  if (!std::filesystem::exists(path, error) && IsSequenceName(path)) {
    return OpenSequence(path, settings);
  }
  const bool isFile = std::filesystem::is_regular_file(path, error);
  // The reader of pictures has the words for what is not a file.
  if (isFile && std::filesystem::file_size(path, error) == 0) {
    RefuseInput(path, "it is empty");
  }
  if (isFile && !LooksLikePicture(path)) {
    try {
      return OpenClip(path, settings);
    } catch (const ToolError&) {
      if (!IsNamedLikePicture(path)) {
        throw;
      }
      RefuseInput(path, "it is damaged, or no PNG, JPEG, TIFF or EXR whatever its name says");
    }
  }
  OpenedSource opened;
  opened.frames = std::make_unique<StillSource>(ReadPicture(path, settings.depth));
  NoteWhatIsLeftOut(opened);
  return opened;
}

}  // namespace cli
