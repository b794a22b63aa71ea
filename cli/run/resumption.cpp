#include "cli/run/resumption.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>

#include "cli/scene/writer.h"

namespace cli {
namespace {

/// All that decides how the frames look but the input's contents: the scene without which frames there are
/// and where they go.
std::string RecipeOf(Scene scene) {
  scene.frames.clear();
  scene.output.clear();
  return WriteScene(scene);
}

}  // namespace

std::string FileStamp(const std::filesystem::path& file) {
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0) {
    return {};
  }
  return fmt::format("{} {}.{:09}", status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec);
}

Resumption::Resumption(const Scene& scene, const std::string& inputStamp, const FrameSource& source,
                       const std::vector<std::int32_t>& frames)
    : name_(scene.output),
      source_(source),
      sharedStamp_(scene.blank ? "blank" : inputStamp),
      manifest_(ManifestName(scene.output), RecipeOf(scene), VINTREL_VERSION) {
  for (const std::int32_t frame : frames) {
    stamps_[frame] = StampFor(frame);
  }
}

std::string Resumption::StampFor(std::int32_t frame) const {
  const std::filesystem::path file = source_.FileOf(frame);
  return file.empty() ? sharedStamp_ : FileStamp(file);
}

std::vector<std::int32_t> Resumption::TakeOut(std::vector<std::int32_t>& frames) const {
  std::vector<std::int32_t> done;
  std::erase_if(frames, [&](std::int32_t frame) {
    const bool isDone = IsDone(frame);
    if (isDone) {
      done.push_back(frame);
    }
    return isDone;
  });
  return done;
}

std::size_t Resumption::OfAnotherScene(const std::vector<std::int32_t>& frames) const {
  return static_cast<std::size_t>(std::ranges::count_if(
      frames, [this](std::int32_t frame) { return IsOfAnother(frame, stamps_.at(frame)); }));
}

std::optional<std::int32_t> Resumption::OfAnotherBeside() {
  constexpr std::size_t kMostLookedAt = 100;  // each asks a file system that may be slow
  manifest_.Read();
  std::vector<std::int32_t> beside = manifest_.Frames();
  std::erase_if(beside, [this](std::int32_t frame) { return stamps_.contains(frame); });
  beside.resize(std::min(beside.size(), kMostLookedAt));
  const auto found = std::ranges::find_if(
      beside, [this](std::int32_t frame) { return IsOfAnother(frame, StampFor(frame)); });
  return found == beside.end() ? std::nullopt : std::optional(*found);
}

bool Resumption::IsOfAnother(std::int32_t frame, const std::string& stamp) const {
  std::error_code error;
  return manifest_.IsOfAnother(frame, stamp) && std::filesystem::exists(name_.ForFrame(frame), error);
}

bool Resumption::IsDone(std::int32_t frame) const {
  // What becomes of a gap is for this run to say, whatever stood in for it in an earlier one.
  const std::string& stamp = stamps_.at(frame);
  return !stamp.empty() && manifest_.IsDone(frame, name_.ForFrame(frame), stamp);
}

void Resumption::Note(std::int32_t frame) {
  manifest_.Note(frame, name_.ForFrame(frame), stamps_.at(frame));
}

}  // namespace cli
