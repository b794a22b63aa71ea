#include "cli/panel/plate.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "cli/run/plan.h"

namespace cli {
namespace {

using minihost::Depth;

/// Of frames that are kept; one is, however large.
constexpr std::size_t kMostKeptBytes = 128 << 20;

HttpBytes Rgba(const minihost::Image& image) {
  HttpBytes bytes(static_cast<std::size_t>(image.Width()) * static_cast<std::size_t>(image.Height()) * 4);
  auto* to = bytes.data();
  for (int row = 0; row < image.Height(); ++row) {
    for (const PF_Pixel& pixel : image.Row<PF_Pixel>(row)) {
      *to++ = pixel.red;
      *to++ = pixel.green;
      *to++ = pixel.blue;
      *to++ = pixel.alpha;
    }
  }
  return bytes;
}

int BitsOf(Depth depth) {
  return depth == Depth::kBits8 ? 8 : depth == Depth::kBits16 ? 16 : 32;
}

}  // namespace

Plate::Plate(const Scene& scene) {
  InputSettings settings = InputSettingsOf(scene);
  OpenedSource opened = OpenSource(scene.input, settings);
  const SourceTraits traits = opened.frames->Traits();
  const bool isStill = !traits.firstFrame.has_value();
  const int first = traits.firstFrame.value_or(0);
  const int last = traits.lastFrame.value_or(first);
  facts_ = {{"name", std::filesystem::path(scene.input).filename().string()},
            {"path", scene.input},
            {"width", traits.width},
            {"height", traits.height},
            {"pixelAspect", traits.pixelAspect},
            {"first", first},
            {"last", last},
            {"count", std::int64_t{last} - first + 1},
            {"isStill", isStill},
            {"fps", traits.rate ? Json(fmt::format("{}/{}", traits.rate->timeScale, traits.rate->timeStep))
                                : Json(nullptr)},
            {"depth", BitsOf(traits.depth)},
            {"hasAlpha", traits.hasAlpha},
            {"notes", opened.notes}};
  NoteWhatIsShown(traits.depth);
  const std::string damage = opened.frames->Damage();
  const bool isSaid =
      std::ranges::any_of(opened.notes, [&](const std::string& note) { return note.ends_with(damage); });
  if (!damage.empty() && !isSaid) {
    facts_["notes"].push_back(fmt::format("'{}' {}", scene.input, damage));
  }
  if (traits.depth != Depth::kBits8) {
    settings.depth = Depth::kBits8;
    opened = OpenSource(scene.input, settings);
  }
  frames_ = std::move(opened.frames);
}

void Plate::NoteWhatIsShown(Depth depth) {
  if (depth == Depth::kBits16) {
    facts_["notes"].push_back("shown in 8 bits, as with --depth 8; renders have 16 bits");
  } else if (depth == Depth::kFloat) {
    facts_["notes"].push_back(
        "shown in 8 bits, as with --depth 8: light above white is cut off, and linear light looks dark; "
        "renders have float, and keep all of it");
  }
}

std::shared_ptr<const HttpBytes> Plate::Frame(std::int32_t number) {
  const bool isStill = facts_["isStill"];
  const std::int32_t wanted = isStill ? 0 : number;
  const std::scoped_lock lock(mutex_);
  const auto found = std::ranges::find(kept_, wanted, &Kept::first);
  if (found != kept_.end()) {
    kept_.splice(kept_.begin(), kept_, found);
    return found->second;
  }
  const std::optional<Picture> picture = frames_->Read(wanted);
  if (!picture) {
    throw HttpError(404, fmt::format("the input has no frame {}; it has {} to {}", number,
                                     facts_["first"].get<int>(), facts_["last"].get<int>()));
  }
  return Keep(wanted, std::make_shared<const HttpBytes>(Rgba(picture->image)));
}

std::shared_ptr<const HttpBytes> Plate::Keep(std::int32_t number, std::shared_ptr<const HttpBytes> bytes) {
  const std::size_t most = std::max<std::size_t>(kMostKeptBytes / bytes->size(), 1);
  kept_.emplace_front(number, std::move(bytes));
  kept_.resize(std::min(kept_.size(), most));
  return kept_.front().second;
}

}  // namespace cli
