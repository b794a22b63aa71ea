// Opens what the user names as input: a picture, numbered pictures or a video.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/frames/source.h"
#include "cli/scene/settings.h"
#include "cli/video/source.h"

namespace cli {

struct InputSettings {
  std::optional<minihost::Depth> depth{};       // without, the file decides
  AlphaForm videoAlpha = AlphaForm::kStraight;  // pictures say it themselves
  std::optional<FrameRate> retimed{};           // of video: the picture shown at each moment, at this rate
};

struct OpenedSource {
  std::unique_ptr<FrameSource> frames;
  const VideoSource* video = nullptr;  // `frames` when it is a video: for its tags and its sound
  std::vector<std::string> notes{};    // for the user
};

/// What the file is decides, not what it is called.  A name that no file bears may be that of a sequence.
/// Throws ToolError(kInput) when nothing can be read, and ToolError(kUsage) for a faulty sequence name.
OpenedSource OpenSource(const std::filesystem::path& path, const InputSettings& settings = {});

}  // namespace cli
