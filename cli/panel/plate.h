// The panel's input: any picture, sequence or video that the tool reads, a frame at a time, as browsers have
// pictures.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <utility>

#include "cli/panel/http.h"
#include "cli/report/json.h"
#include "cli/run/open_source.h"
#include "cli/scene/scene.h"

namespace cli {

/// Frames are what a render in 8 bits reads: of inputs with more, what `--depth 8` makes of them.  The facts
/// say so.
class Plate {
 public:
  /// Opens the scene's input, read as a render of the scene would read it.  Throws ToolError.
  explicit Plate(const Scene& scene);

  /// {"name", "path", "width", "height", "pixelAspect", "first", "last", "count", "isStill", "fps", "depth",
  /// "hasAlpha", "notes"}; "fps" is null without one, and "depth" what a render has: 8, 16 or 32.
  const Json& Facts() const { return facts_; }

  int Width() const { return frames_->Traits().width; }
  int Height() const { return frames_->Traits().height; }

  /// Rows from the top, without padding, of red, green, blue and straight alpha of 8 bits.  Any number of
  /// threads; frames that were asked for last are still there.  Throws HttpError(404) when the input has no
  /// such frame, and ToolError(kInput) when it cannot be read.
  std::shared_ptr<const HttpBytes> Frame(std::int32_t number);

 private:
  using Kept = std::pair<std::int32_t, std::shared_ptr<const HttpBytes>>;

  void NoteWhatIsShown(minihost::Depth depth);
  std::shared_ptr<const HttpBytes> Keep(std::int32_t number, std::shared_ptr<const HttpBytes> bytes);

  Json facts_;
  std::unique_ptr<FrameSource> frames_;
  std::mutex mutex_;      // of what follows, and of reading
  std::list<Kept> kept_;  // the last one asked for first
};

}  // namespace cli
