// Scene files: a render in TOML.
//
//   [render]                         every key may be left out
//   input = "plate.####.exr"         or blank = "1920x1080"; paths as on the command line
//   output = "snow.####.png"
//   frames = "1-100x2"               or a number
//   fps = "24000/1001"               or a number
//   retime = true                    of video: at fps, the picture shown at each moment
//   shutter = 180                    degrees
//   depth = "16"                     8, 16, half or float
//   alpha = "straight"               or premultiplied
//   compression = "none"             of pictures: rle, zip and what else the format takes
//   codec = "hevc"                   of video
//   quality = 20                     of JPEG and video
//   sound = "copy"                   of video: auto, copy, aac or none
//   proxy = 2                        1, 2 or 4
//   pixel-aspect = 1.5
//
//   [parameters]                     by the names that --set takes
//   Flakes = 20000
//   Speed = { keys = [[0, 100], [48, 400]], ease = "smooth" }
//   Wind = { keys = [[0, 0, "hold"], [24, 30, "linear"], [48, -30]] }
//   Color = "#ffeedd"
//   Offset = [50, 40]                percent of the layer
//   "Transfer Mode" = "Lighten"
//   "Composite With Original" = true
//   "wiggle/amount" = 30
//
//   [preset]                         of presets: name and description
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "cli/scene/scene.h"

namespace cli {

/// What a preset says about itself.
struct PresetLabel {
  std::string name;
  std::string description;  // one line
};

/// Changes of `scene` what the file speaks of and keeps the rest.  Throws ToolError, kInput when the file
/// cannot be read and kUsage, with file, line and column, for what is wrong in it; then nothing changes.
void ApplySceneFile(const std::filesystem::path& file, Scene& scene);

/// The same for text at hand; `name` stands for the file in messages.
void ApplySceneText(std::string_view text, std::string_view name, Scene& scene);

/// Throws like ApplySceneFile, and for a file without [preset], its name or its description.
PresetLabel ReadPresetLabel(const std::filesystem::path& file);

}  // namespace cli
