// One frame to render: its time, its scale, its pictures, and what came of it.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "hostapi/types.h"
#include "minihost/parameter/track.h"
#include "minihost/picture/image.h"

namespace minihost {

/// How time is counted.  Nothing is checked: the values go to the effect as they are, zero included.
struct FrameTiming {
  std::uint32_t timeScale = 30;    // ticks a second
  std::int32_t timeStep = 1;       // ticks that a rendered frame lasts
  std::int32_t localTimeStep = 1;  // ticks that a frame of the layer lasts; negative plays backwards
  double shutterDegrees = 180;     // 0 to 360 and beyond; the effect gets degrees / 360 in 16.16
};

enum class Protocol {
  kSmart,  // the two-step render
  kPlain,  // the single render command
};

/// What a hook answers: go on, or end the render as soon as the effect can.
enum class Verdict { kContinue, kStop };

/// What the effect sees when a hook answers kStop, and returns from the render unless it has a code of its
/// own for it.
inline constexpr PF_Err kRenderStopped = 1000;

/// Called on the rendering thread, from within the effect.  An exception thrown by a hook stops the render
/// and then leaves Instance::Render.
struct RenderHooks {
  std::function<Verdict()> abort;
  std::function<Verdict(int current, int total)> progress;

  /// For who keeps the values elsewhere: the value of a parameter at a layer frame, in place of the
  /// instance's own tracks.  It has the kind of the parameter's default and lies in its valid range.
  std::function<Value(int parameter, double layerFrame)> value{};
};

struct Frame {
  std::int32_t time = 0;  // in the layer's time, ticks
  FrameTiming timing;
  Protocol protocol = Protocol::kSmart;

  PF_RationalScale downsampleX{1, 1};  // render pixels for each full-resolution pixel
  PF_RationalScale downsampleY{1, 1};
  PF_RationalScale pixelAspectRatio{1, 1};  // a pixel's width over its height

  /// The whole layer in render pixels, already downsampled.  Null: a layer without pixels.  Not written to.
  const Image* input = nullptr;

  /// Where the picture goes: as large as the layer, or as the tile when there is one, and of the layer's
  /// depth.  May not be the input.
  Image* output = nullptr;

  /// Smart protocol: the part of the layer to render, in the layer's coordinates, inside it and not empty.
  std::optional<PF_LRect> tile;

  /// Plain protocol: the part of the output that will be shown (its extent hint); the whole when not given.
  std::optional<PF_LRect> shown;

  RenderHooks hooks;
};

struct CommandResult {
  PF_Err err = PF_Err_NONE;  // the effect's; unchanged
  std::string message;       // the effect's message to the user, line feeds between lines; often empty
};

struct RenderResult : CommandResult {
  /// Smart protocol: what the effect said it would produce, and at most could, in the layer's coordinates.
  /// The output outside of `resultRect` is transparent black.
  PF_LRect resultRect{};
  PF_LRect maxResultRect{};
};

}  // namespace minihost
