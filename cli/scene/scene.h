// A render, described completely: what is read, what is written, which frames, and how the snow falls.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "cli/scene/alpha_form.h"
#include "cli/scene/frame_size.h"
#include "minihost/parameter/set.h"
#include "minihost/picture/image.h"

namespace cli {

inline constexpr double kMinShutterDegrees = 1;
inline constexpr double kMaxShutterDegrees = 720;

struct Scene {
  explicit Scene(minihost::SharedParameterList list) : parameters(std::move(list)) {}

  std::string input;                       // a path or a pattern; empty with `blank`
  std::optional<FrameSize> blank;          // transparent ground of this size in place of an input
  std::string output;                      // a path or a pattern
  std::string frames;                      // as ParseFrames reads it; empty: the input's, or frame 0
  std::string fps;                         // as ParseFrameRate reads it; empty: the input's, or 24
  double shutterDegrees = 180;             // kMinShutterDegrees..kMaxShutterDegrees
  std::optional<minihost::Depth> depth;    // empty: the input's
  AlphaForm alpha = AlphaForm::kStraight;  // of a video; pictures say it themselves
  std::string compression;                 // of picture files (cli/picture_writer.h); empty: zip
  int proxy = 1;                           // 1, 2 or 4: rendered at one over this of the size
  std::optional<double> pixelAspect;       // a pixel's width over its height; empty: the input's
  minihost::ParameterSet parameters;
};

/// Whether two scenes say the same.  A single key says as much as a constant, and how the last key leads on
/// says nothing.
bool operator==(const Scene& one, const Scene& other);

// The values as they are written, each with its inverse where files need one.  All of them throw
// ToolError(kUsage) with the value and what is possible, without the name of the option or key.

/// "8", "16" or "float".
minihost::Depth ParseDepth(std::string_view text);
std::string_view FormatDepth(minihost::Depth depth);

/// "straight" or "premultiplied".
AlphaForm ParseAlphaForm(std::string_view text);
std::string_view FormatAlphaForm(AlphaForm form);

void CheckShutter(double degrees);
void CheckProxy(double divisor);
void CheckPixelAspect(double aspect);

}  // namespace cli
