#include "cli/scene/settings.h"

#include <fmt/format.h>

#include <algorithm>

#include "cli/report/choice.h"
#include "cli/report/error.h"
#include "cli/report/number.h"

namespace cli {
namespace {

using minihost::Depth;

constexpr double kMinShutterDegrees = 1;
constexpr double kMaxShutterDegrees = 720;

// Beyond this it is nonsense, not anamorphic.
constexpr double kMaxPixelAspect = 100;

constexpr Choices<DepthSetting, 4> kDepths = {{{Depth::kBits8, false}, "8"},
                                              {{Depth::kBits16, false}, "16"},
                                              {{Depth::kFloat, true}, "half"},
                                              {{Depth::kFloat, false}, "float"}};
constexpr Choices<SoundWish, 4> kSounds = {{SoundWish::kAuto, "auto"},
                                           {SoundWish::kCopy, "copy"},
                                           {SoundWish::kAac, "aac"},
                                           {SoundWish::kNone, "none"}};
constexpr Choices<AlphaForm, 2> kAlphaForms = {{AlphaForm::kStraight, "straight"},
                                               {AlphaForm::kPremultiplied, "premultiplied"}};

/// All of `digits` as one side of a picture, 0 when it is none.
int ParseSide(std::string_view digits) {
  const int side = ParseNumber<int>(digits).value_or(0);
  return side <= minihost::Image::kMaxSide ? std::max(side, 0) : 0;
}

}  // namespace

FrameSize ParseFrameSize(std::string_view text) {
  const std::size_t cross = std::min(text.find('x'), text.size());
  const FrameSize size{ParseSide(text.substr(0, cross)),
                       ParseSide(text.substr(std::min(cross + 1, text.size())))};
  if (size.width == 0 || size.height == 0) {
    Refuse(ExitCode::kUsage, "'{}' is not a size in pixels up to {} a side; write it as 1920x1080", text,
           minihost::Image::kMaxSide);
  }
  return size;
}

std::string FormatFrameSize(const FrameSize& size) {
  return fmt::format("{}x{}", size.width, size.height);
}

DepthSetting ParseDepth(std::string_view text) {
  return ParseChoice(kDepths, text);
}

std::string_view FormatDepth(const DepthSetting& setting) {
  return NameOf(kDepths, setting);
}

SoundWish ParseSound(std::string_view text) {
  return ParseChoice(kSounds, text);
}

std::string_view FormatSound(SoundWish sound) {
  return NameOf(kSounds, sound);
}

AlphaForm ParseAlphaForm(std::string_view text) {
  return ParseChoice(kAlphaForms, text);
}

std::string_view FormatAlphaForm(AlphaForm form) {
  return NameOf(kAlphaForms, form);
}

void CheckShutter(double degrees) {
  if (!(degrees >= kMinShutterDegrees && degrees <= kMaxShutterDegrees)) {
    Refuse(ExitCode::kUsage,
           "{} is not between {} and {} degrees (no shutter at all would count as one open for the whole "
           "frame; the least blur is {})",
           degrees, kMinShutterDegrees, kMaxShutterDegrees, kMinShutterDegrees);
  }
}

void CheckProxy(double divisor) {
  if (divisor != 1 && divisor != 2 && divisor != 4) {
    Refuse(ExitCode::kUsage, "{} is not 1, 2 or 4, the whole, half or quarter size", divisor);
  }
}

bool IsPixelAspect(double aspect) {
  return aspect >= 1 / kMaxPixelAspect && aspect <= kMaxPixelAspect;
}

void CheckPixelAspect(double aspect) {
  if (!IsPixelAspect(aspect)) {
    Refuse(ExitCode::kUsage, "{} is not a pixel's width over its height, {} to {}", aspect,
           1 / kMaxPixelAspect, kMaxPixelAspect);
  }
}

}  // namespace cli
