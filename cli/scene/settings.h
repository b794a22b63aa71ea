// The settings of a render as they are written, each with what it may be.  What reads or checks one throws
// ToolError(kUsage) with the value and what is possible, without the name of the option or key.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "minihost/picture/image.h"

namespace cli {

/// Pixels.
struct FrameSize {
  int width = 0;
  int height = 0;
  bool operator==(const FrameSize&) const = default;
};

/// Whether the color of a file with alpha has been multiplied by it.
enum class AlphaForm { kStraight, kPremultiplied };

/// What becomes of the sound of a video.
enum class SoundWish {
  kAuto,  // copied where the container takes it, else encoded as AAC
  kCopy,
  kAac,
  kNone,
};

/// How the files that a render makes are encoded.  Empty: as the format does it by itself.
struct EncodingSettings {
  std::string compression{};     // of pictures (cli/picture/writer.h)
  std::string codec{};           // of video (cli/video/format.h)
  std::optional<int> quality{};  // on the scale of JPEG or of the video encoder, which check it
  SoundWish sound = SoundWish::kAuto;
  bool isHalf = false;  // samples of EXR in half precision, whatever the input has
  bool operator==(const EncodingSettings&) const = default;
};

/// "1920x1080"; each side up to what an image may have.
FrameSize ParseFrameSize(std::string_view text);
std::string FormatFrameSize(const FrameSize& size);

/// What is rendered in, and whether EXR holds it as half.
struct DepthSetting {
  minihost::Depth depth;
  bool isHalf;
  bool operator==(const DepthSetting&) const = default;
};

/// "8", "16", "float", or "half": rendered in float.
DepthSetting ParseDepth(std::string_view text);
std::string_view FormatDepth(const DepthSetting& setting);

/// "auto", "copy", "aac" or "none".
SoundWish ParseSound(std::string_view text);
std::string_view FormatSound(SoundWish sound);

/// "straight" or "premultiplied".
AlphaForm ParseAlphaForm(std::string_view text);
std::string_view FormatAlphaForm(AlphaForm form);

/// 1 to 720.
void CheckShutter(double degrees);

/// 1, 2 or 4.
void CheckProxy(double divisor);

/// Whether a pixel may be believed to be so many times as wide as high: 1/100 to 100.
bool IsPixelAspect(double aspect);
void CheckPixelAspect(double aspect);

}  // namespace cli
